#pragma once

#include "Actions/ActionContext.h"
#include "System/HostSystem.h"

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

class Connections;

/// What the system has refused to this program, until it is allowed: the panel tells the newest once, the
/// settings as long as it stands. Nothing is refused on a desktop whose settings have no page for it. Main
/// thread.
class Refusals : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")
    /// For the panel; empty when there is nothing to tell, or it was put aside.
    Q_PROPERTY(QString text READ text NOTIFY changed)
    /// For the settings; empty when nothing is refused.
    Q_PROPERTY(QString standing READ standing NOTIFY changed)

  public:
    /// `context` and `connections` outlive this.
    Refusals(const ActionContext& context, Connections& connections);

    [[nodiscard]] QString text() const;
    [[nodiscard]] QString standing() const;

    /// `untold` is what could not be told for that reason, so the panel tells it.
    void refuse(Permission permission, const QString& untold = {});
    void allow(Permission permission);

    /// `refuse` or `allow`, as the system has answered.
    void set(Permission permission, bool refused) { refused ? refuse(permission) : allow(permission); }

    Q_INVOKABLE void dismiss();
    /// Opens the page of the system's settings where the user can allow what was refused last.
    Q_INVOKABLE void openSettings() const;

  Q_SIGNALS:
    void changed();

  private:
    QCoro::Task<> lookAtVolume(QString domain);

    const ActionContext& m_context;
    QList<Permission> m_refused; ///< the newest last
    QString m_untold;
    bool m_isDismissed = false;
};
