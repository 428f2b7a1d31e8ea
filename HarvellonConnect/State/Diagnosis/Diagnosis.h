#pragma once

#include "State/Diagnosis/DiagnosisText.h"
#include "State/Diagnosis/NamesInUse.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

class AppState;
class Shell;

/// A report for whoever helps: versions, settings, mounts and the activity log, without anything that names
/// the user, the accounts or the projects. Main thread.
class Diagnosis : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")

    Q_PROPERTY(bool busy READ isBusy NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)

  public:
    /// Both outlive this.
    Diagnosis(AppState& state, Shell& shell) : m_state(state), m_shell(shell), m_names(state) {}

    /// Each begins at once and ends in a message; while one is under way, further ones are ignored.
    Q_INVOKABLE void copy();
    Q_INVOKABLE void save();

    [[nodiscard]] bool isBusy() const { return m_busy; }

    /// How the last report has ended; empty before the first.
    [[nodiscard]] QString message() const { return m_message; }

  Q_SIGNALS:
    void changed();

  private:
    enum class Destination { clipboard, file };

    QCoro::Task<> make(Destination destination);
    QCoro::Task<> writeFile(QString report);
    [[nodiscard]] DiagnosisFacts facts() const;
    void finish(const QString& message);

    AppState& m_state;
    Shell& m_shell;
    NamesInUse m_names;
    bool m_busy = false;
    QString m_message;
};
