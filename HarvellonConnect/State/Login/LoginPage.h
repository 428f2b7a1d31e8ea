#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>
#include <QObject>
#include <QUrl>

/// The page of the login that waits for the browser. Its address carries the login's state and challenge, so
/// it reaches the browser and, when the user asks for it, the clipboard, but no log. Main thread.
class LoginPage : public QObject {
    Q_OBJECT

  public:
    /// `context` outlives this.
    explicit LoginPage(const ActionContext& context) : m_context(context) {}

    /// Opens the page in the default browser. Where no browser opens, that is reported, once it is known.
    void open(const QUrl& address);
    /// Copies the address, for another browser. Does nothing when no login waits.
    void copyAddress() const;

    /// The login waits no longer.
    void forget() { m_address.clear(); }

  private:
    QCoro::Task<> tellUnlessOpened(QString address);

    const ActionContext& m_context;
    QString m_address; ///< empty while no login waits
};
