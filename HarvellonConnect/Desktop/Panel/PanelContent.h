#pragma once

#include "State/AppState.h"

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

/// What the panel shows in place of rows: a symbol and two lines, or nothing.
struct ListNotice {
    Q_GADGET
    QML_VALUE_TYPE(listNotice)
    Q_PROPERTY(QString symbol MEMBER symbol CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString text MEMBER text CONSTANT)

  public:
    QString symbol;
    QString title;
    QString text;

    bool operator==(const ListNotice&) const = default;
};

/// What decides how the panel looks.
struct PanelFacts {
    bool signedIn = false;
    bool authenticating = false;
    bool loading = false;
    bool hasAccount = false; ///< a login is stored, whether or not its profile has come yet
    int projects = 0;
    int visible = 0;
    QString searchText;
};

/// No project has been seen yet, and some are on their way.
[[nodiscard]] bool isFirstLoad(const PanelFacts& facts);
[[nodiscard]] ListNotice listNotice(const PanelFacts& facts);

/// How the panel looks in the present state. Main thread.
class PanelContent : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(AppState* state READ state WRITE setState NOTIFY changed REQUIRED)
    Q_PROPERTY(bool firstLoad READ firstLoad NOTIFY changed)
    Q_PROPERTY(bool badgeShown READ badgeShown NOTIFY changed)
    Q_PROPERTY(bool searchEnabled READ searchEnabled NOTIFY changed)
    Q_PROPERTY(QString personName READ personName NOTIFY changed)
    Q_PROPERTY(ListNotice notice READ notice NOTIFY changed)

  public:
    using QObject::QObject;

    [[nodiscard]] AppState* state() const { return m_state; }

    void setState(AppState* state);

    [[nodiscard]] bool firstLoad() const { return isFirstLoad(m_facts); }

    /// Somebody is signed in, or the stored login is about to tell who.
    [[nodiscard]] bool badgeShown() const { return m_facts.signedIn || firstLoad(); }

    [[nodiscard]] bool searchEnabled() const { return badgeShown(); }

    [[nodiscard]] QString personName() const; ///< of the profile, until it comes of the active account

    [[nodiscard]] ListNotice notice() const { return listNotice(m_facts); }

  Q_SIGNALS:
    void changed();

  private:
    void update();

    AppState* m_state = nullptr;
    PanelFacts m_facts;
};
