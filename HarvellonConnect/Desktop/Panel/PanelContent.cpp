#include "Desktop/Panel/PanelContent.h"

#include "State/AppState.h"

bool isFirstLoad(const PanelFacts& facts) {
    return facts.loading && facts.projects == 0 && (facts.signedIn || facts.hasAccount) &&
           !facts.authenticating;
}

ListNotice listNotice(const PanelFacts& facts) {
    if (facts.visible > 0 || isFirstLoad(facts))
        return {};
    if (facts.authenticating && !facts.signedIn)
        return {QStringLiteral("person.crop.circle"), QStringLiteral("Noch keine Projekte"),
                QStringLiteral("Die Anmeldung geht im Browser weiter."), false, true};
    if (!facts.signedIn && facts.hasAccount)
        return {QStringLiteral("arrow.clockwise"), QStringLiteral("Projekte nicht geladen"),
                QStringLiteral("Aktualisieren versucht es erneut. Hilft das nicht, melde dich neu an."),
                true};
    if (!facts.signedIn)
        return {QStringLiteral("person.crop.circle"), QStringLiteral("Noch keine Projekte"),
                QStringLiteral("Nach der Anmeldung erscheinen hier alle Projekte des Accounts."), false,
                true};
    if (facts.projects == 0)
        return {QStringLiteral("folder"), QStringLiteral("Keine Projekte"),
                QStringLiteral("Diesem Account sind keine Projekte zugeordnet."), false, true};
    return {QStringLiteral("magnifyingglass"),
            QStringLiteral("Kein Projekt passt zu „%1“").arg(facts.searchText.trimmed()),
            QStringLiteral("Gesucht wurde in Name und Domain.")};
}

void PanelContent::setState(AppState* state) {
    if (state == m_state)
        return;
    m_state = state;
    connect(state, &AppState::projectsChanged, this, &PanelContent::update);
    connect(state, &AppState::userProfileChanged, this, &PanelContent::update);
    connect(state, &AppState::isLoadingChanged, this, &PanelContent::update);
    connect(state, &AppState::isAuthenticatingChanged, this, &PanelContent::update);
    connect(state, &AppState::searchTextChanged, this, &PanelContent::update);
    connect(state->visibleProjects(), &ProjectListModel::countChanged, this, &PanelContent::update);
    connect(state->accountList(), &AccountListModel::countChanged, this, &PanelContent::update);
    update();
}

void PanelContent::update() {
    m_facts = {m_state->signedIn(),
               m_state->isAuthenticating(),
               m_state->isLoading(),
               m_state->activeAccountID().has_value(),
               m_state->projectCount(),
               m_state->visibleProjects()->count() - m_state->visibleProjects()->keptCount(),
               m_state->searchText()};
    Q_EMIT changed();
}

QString PanelContent::personName() const {
    if (!m_state)
        return {}; // bindings read this before the state is set
    if (m_facts.signedIn)
        return m_state->userName();
    for (const Account& account : m_state->accounts()) {
        if (account.id == m_state->activeAccountID())
            return account.displayName;
    }
    return {};
}
