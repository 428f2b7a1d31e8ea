#pragma once

#include "State/AppState.h"

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

/// What the panel shows instead of rows: a symbol and two lines, or nothing if empty.
struct ListNotice {
    Q_GADGET
    QML_VALUE_TYPE(listNotice)
    Q_PROPERTY(QString symbol MEMBER symbol CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString text MEMBER text CONSTANT)
    Q_PROPERTY(bool retry MEMBER retry CONSTANT)
    Q_PROPERTY(bool steps MEMBER steps CONSTANT)

  public:
    QString symbol;
    QString title;
    QString text;
    bool retry = false; ///< offers to load the list again
    bool steps = false; ///< shows the way to the first mount

    bool operator==(const ListNotice&) const = default;
};

/// The part of AppState that the panel's layout depends on.
struct PanelFacts {
    bool signedIn = false;
    bool authenticating = false;
    bool loading = false;
    bool hasAccount = false; ///< a login is stored, even if its profile is not loaded yet
    int projects = 0;
    int visible = 0; ///< rows of the list, without the kept ones above it
    QString searchText;
};

/// No project has been loaded yet, and the first load is running.
[[nodiscard]] bool isFirstLoad(const PanelFacts& facts);
[[nodiscard]] ListNotice listNotice(const PanelFacts& facts);

/// What the panel shows in the current state. Main thread.
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

    /// The user is signed in, or the profile of the stored login is loading.
    [[nodiscard]] bool badgeShown() const { return m_facts.signedIn || firstLoad(); }

    [[nodiscard]] bool searchEnabled() const { return badgeShown(); }

    /// From the profile; from the active account until the profile is loaded.
    [[nodiscard]] QString personName() const;

    [[nodiscard]] ListNotice notice() const { return listNotice(m_facts); }

  Q_SIGNALS:
    void changed();

  private:
    void update();

    AppState* m_state = nullptr;
    PanelFacts m_facts;
};
