#include "State/Diagnosis/Diagnosis.h"

#include "State/AppState.h"
#include "State/Diagnosis/Versions.h"
#include "System/Async.h"
#include "System/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QMetaProperty>
#include <QPointer>
#include <QStandardPaths>

namespace {
QString levelName(ActivityLogLevel level) {
    switch (level) {
    case ActivityLogLevel::info:
        return QStringLiteral("Info");
    case ActivityLogLevel::success:
        return QStringLiteral("Erfolg");
    case ActivityLogLevel::warning:
        return QStringLiteral("Warnung");
    case ActivityLogLevel::error:
        return QStringLiteral("Fehler");
    }
    Q_UNREACHABLE();
}

QString statusName(ConnectionStatus::Case status) {
    switch (status) {
    case ConnectionStatus::Case::idle:
        return QStringLiteral("nichts geladen");
    case ConnectionStatus::Case::checking:
        return QStringLiteral("wird geladen");
    case ConnectionStatus::Case::success:
        return QStringLiteral("geladen");
    case ConnectionStatus::Case::failure:
        return QStringLiteral("gescheitert");
    }
    Q_UNREACHABLE();
}

QString folderForReports(const HostSystem& host) {
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const bool ownHome = host.homeFolder == QDir::homePath();
    return ownHome && QFileInfo(documents).isDir() ? documents : host.homeFolder;
}
} // namespace

void Diagnosis::copy() {
    make(Destination::clipboard);
}

void Diagnosis::save() {
    make(Destination::file);
}

DiagnosisFacts Diagnosis::facts() const {
    DiagnosisFacts facts;
    facts.host = m_state.host();
    facts.domains = m_names.domains();
    facts.secrets = m_names.secrets();
    const QMetaObject* const properties = m_state.metaObject();
    for (int i = properties->propertyOffset(); i < properties->propertyCount(); ++i) {
        const QMetaProperty property = properties->property(i);
        if (property.isWritable() && property.metaType().id() == QMetaType::Bool)
            facts.settings.append({QString::fromLatin1(property.name()), property.read(&m_state).toBool()
                                                                             ? QStringLiteral("ein")
                                                                             : QStringLiteral("aus")});
    }
    const ProgramSettings& programs = *m_state.programs();
    for (const auto& [name, choice] :
         {std::pair("editor", programs.editor()), std::pair("terminal", programs.terminal()),
          std::pair("database", programs.databaseWay())})
        facts.settings.append(
            {QString::fromLatin1(name), choice.isEmpty() ? QStringLiteral("wie sonst") : choice});
    facts.state = {{QStringLiteral("Projekte"), QString::number(m_state.projectCount())},
                   {QStringLiteral("Verbunden"), QString::number(m_state.connectedDomains().size())},
                   {QStringLiteral("Accounts"), QString::number(m_state.accounts().size())},
                   {QStringLiteral("Liste"), statusName(m_state.connectionStatus())},
                   {QStringLiteral("Letzter Fehler"), m_state.lastErrorText()},
                   {QStringLiteral("Fehler des Accounts"), m_state.accountError()},
                   {QStringLiteral("Tastenkürzel"), m_state.hotkeyProblem()},
                   {QStringLiteral("Git"), m_state.gitProblem()}};
    for (const ActivityLogEntry& entry : m_state.activityLog()->entries())
        facts.log.append({entry.timestamp, levelName(entry.level), entry.message});
    return facts;
}

QCoro::Task<> Diagnosis::make(Destination destination) {
    if (m_busy)
        co_return;
    const QPointer<Diagnosis> guard(this);
    m_busy = true;
    m_message = QStringLiteral("Die Diagnose wird zusammengestellt …");
    Q_EMIT changed();
    const Versions versions = co_await askVersions(m_state.host(), m_shell);
    if (!guard)
        co_return;
    DiagnosisFacts gathered = facts();
    gathered.versions = versions.lines;
    gathered.warnings = versions.warnings;
    const std::function<QString()> write = [gathered] { return diagnosisText(gathered); };
    const std::optional<QString> report = co_await Async::onWorker(write);
    if (!guard)
        co_return;
    if (destination == Destination::file) {
        co_await writeFile(*report);
        co_return;
    }
    m_state.copyText(*report);
    finish(QStringLiteral("Diagnose in die Zwischenablage kopiert. Namen und Domains sind darin ersetzt."));
}

QCoro::Task<> Diagnosis::writeFile(QString report) {
    const QPointer<Diagnosis> guard(this);
    const QString name =
        QStringLiteral("Harvellon Connect Diagnose %1.txt")
            .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH-mm-ss")));
    const QString path = QDir(folderForReports(m_state.host())).filePath(name);
    const std::function<bool()> write = [path, report] {
        return writeAtomically(path, report.toUtf8(), QFile::ReadOwner | QFile::WriteOwner);
    };
    const std::optional<bool> written = co_await Async::onWorker(write);
    if (!guard)
        co_return;
    const QString home = m_state.host().homeFolder;
    const QString shown = path.startsWith(home) ? QLatin1Char('~') + path.mid(home.size()) : path;
    if (*written)
        finish(QStringLiteral("Diagnose gespeichert: %1").arg(shown));
    else
        finish(QStringLiteral(
                   "Die Diagnose konnte nicht gespeichert werden: %1. Vielleicht ist kein Platz mehr.")
                   .arg(shown));
}

void Diagnosis::finish(const QString& message) {
    m_busy = false;
    m_message = message;
    Q_EMIT changed();
}
