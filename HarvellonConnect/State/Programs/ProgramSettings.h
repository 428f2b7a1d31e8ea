#pragma once

#include "Actions/Programs/ProgramChoices.h"
#include "System/HostSystem.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQmlIntegration>

#include <functional>

class ActivityReport;
class Preferences;

/// Which of the user's programs open things: what can be chosen, what has been chosen, and for which project.
/// A list is of maps with "key", "name" and "chosen". Main thread.
class ProgramSettings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once, by AppState")

    Q_PROPERTY(QVariantList editors READ editors NOTIFY changed)
    Q_PROPERTY(QString editor READ editor WRITE setEditor NOTIFY changed)
    Q_PROPERTY(QString editorCommand READ editorCommand WRITE setEditorCommand NOTIFY changed)
    Q_PROPERTY(QVariantList terminals READ terminals NOTIFY changed)
    Q_PROPERTY(QString terminal READ terminal WRITE setTerminal NOTIFY changed)
    Q_PROPERTY(QString terminalCommand READ terminalCommand WRITE setTerminalCommand NOTIFY changed)
    Q_PROPERTY(bool editorIsFixed READ editorIsFixed CONSTANT)     ///< by the administrator
    Q_PROPERTY(bool terminalIsFixed READ terminalIsFixed CONSTANT) ///< the same
    Q_PROPERTY(QVariantList databaseWays READ databaseWays NOTIFY changed)
    Q_PROPERTY(QString databaseWay READ databaseWay WRITE setDatabaseWay NOTIFY changed)

  public:
    /// `openEditor` opens a project's folder in the editor, where its row offers that. All that is referred
    /// to outlives this.
    ProgramSettings(HostSystem host, Preferences& preferences, ActivityReport& report,
                    std::function<void(const QString& domain)> openEditor);

    /// Looks on a worker thread which programs are there. Never fails.
    Q_INVOKABLE void look();
    /// The editors to choose from for one project.
    Q_INVOKABLE [[nodiscard]] QVariantList editorsFor(const QString& domain) const;
    /// Opens the project in the editor with this key, now and from now on. The editor of the settings takes
    /// the project's own back. Does nothing where the editor is fixed.
    Q_INVOKABLE void openWith(const QString& domain, const QString& key);

    void setEditor(const QString& key);
    void setEditorCommand(const QString& line);
    void setTerminal(const QString& key);
    void setTerminalCommand(const QString& line);
    void setDatabaseWay(const QString& key);

    [[nodiscard]] const ProgramChoices& choices() const { return m_choices; }

    [[nodiscard]] QVariantList editors() const;
    [[nodiscard]] QVariantList terminals() const;

    [[nodiscard]] QVariantList databaseWays() const;

    [[nodiscard]] QString databaseWay() const { return m_databaseWay; }

    [[nodiscard]] bool editorIsFixed() const;
    [[nodiscard]] bool terminalIsFixed() const;

    [[nodiscard]] QString editor() const { return m_choices.editor; }

    [[nodiscard]] QString editorCommand() const { return m_choices.editorCommand; }

    [[nodiscard]] QString terminal() const { return m_choices.terminal; }

    [[nodiscard]] QString terminalCommand() const { return m_choices.terminalCommand; }

  Q_SIGNALS:
    void changed();

  private:
    QCoro::Task<> lookForPrograms();
    void choose(QString& choice, const QString& value, const QString& preference);
    [[nodiscard]] QVariantList editorsWith(const QString& chosen, bool withOwn) const;

    const HostSystem m_host;
    const Preferences& m_preferences;
    ActivityReport& m_report;
    std::function<void(const QString& domain)> m_openEditor;
    ProgramChoices m_choices;
    QList<KnownProgram> m_editors;
    QList<KnownProgram> m_terminals;
    QString m_databaseWay; ///< a key, for m_choices.database
    bool m_hasDatabaseShell = false;
};
