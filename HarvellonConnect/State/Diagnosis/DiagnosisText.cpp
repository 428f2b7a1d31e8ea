#include "State/Diagnosis/DiagnosisText.h"

#include "Mounting/Ending/LeftoverMounts.h"
#include "State/Diagnosis/Redaction.h"
#include "System/Tables/MountTable.h"

namespace {
class Report {
  public:
    explicit Report(Redaction& redaction) : m_redaction(redaction) {}

    void title(const QString& title) { m_text += QStringLiteral("\n%1\n").arg(title); }

    /// `label` is ours, `value` somebody else's. Further lines of a value are indented.
    void line(const QString& label, const QString& value) {
        QString text = m_redaction.redacted(value.trimmed());
        text.replace(QLatin1Char('\n'), QLatin1String("\n    "));
        m_text += QStringLiteral("  %1: %2\n").arg(label, text);
    }

    void lines(const QList<std::pair<QString, QString>>& lines) {
        for (const auto& [label, value] : lines)
            line(label, value);
    }

    [[nodiscard]] QString text() const { return m_text; }

  private:
    Redaction& m_redaction;
    QString m_text;
};
} // namespace

QString diagnosisText(const DiagnosisFacts& facts) {
    const QString home = facts.host.homeFolder;
    const QString mountRoot = facts.host.mountRoot();
    Redaction redaction(home);
    for (const QString& domain : facts.domains) {
        redaction.add(QStringLiteral("projekt"), domain);
        redaction.addAs(QStringLiteral("~/Harvellon/") + redaction.redacted(domain),
                        mountRoot + QLatin1Char('/') + domain);
    }
    redaction.addAs(QStringLiteral("~/Harvellon"), mountRoot);
    redaction.addAs(QStringLiteral("~"), home);
    for (const auto& [kind, value] : facts.secrets)
        redaction.add(kind, value);

    Report report(redaction);
    report.title(QStringLiteral("Versionen"));
    report.lines(facts.versions);
    for (const QString& warning : facts.warnings)
        report.line(QStringLiteral("Warnung"), warning);
    report.title(QStringLiteral("Einstellungen"));
    report.lines(facts.settings);
    report.title(QStringLiteral("Zustand"));
    report.lines(facts.state);
    report.title(QStringLiteral("Mounts"));
    for (const MountTable::Entry& mount : MountTable::entries()) {
        if (!mount.path.startsWith(mountRoot + QLatin1Char('/')))
            continue;
        const QString fuse =
            fuseOf(facts.host, mount).value_or(FuseKind{QStringLiteral("kein FUSE"), {}, {}}).name;
        // Its source may name a project that nobody knows any more.
        report.line(fuse + QStringLiteral(", ") + mount.type, mount.path);
    }
    report.title(QStringLiteral("Protokoll"));
    for (const DiagnosisFacts::Line& line : facts.log)
        report.line(line.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss ")) + line.level, line.message);
    return QStringLiteral("Harvellon Connect: Diagnose\n") + report.text();
}
