#include "Actions/Database/DatabaseShell.h"

#include "Actions/Database/DatabaseTunnels.h"
#include "Actions/Openers.h"
#include "System/Files/PrivateFolder.h"
#include "System/Reporter.h"

#include <QTemporaryFile>
#include <QTimer>

#include <memory>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::milliseconds startLimit = 1min; // of a terminal

/// A line feed would begin an option of its own.
QByteArray quoted(QString value) {
    value.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char('"'), QStringLiteral("\\\""))
        .replace(QLatin1Char('\n'), QStringLiteral("\\n"))
        .replace(QLatin1Char('\r'), QStringLiteral("\\r"));
    return '"' + value.toUtf8() + "\"\n";
}
} // namespace

std::optional<QByteArray> mysqlOptions(const DatabaseCredentials& credentials, quint16 port) {
    for (const QString& value : {credentials.database, credentials.user, credentials.password}) {
        if (value.contains(QChar(QChar::Null)))
            return std::nullopt;
    }
    return "[client]\nprotocol=tcp\nhost=127.0.0.1\nport=" + QByteArray::number(port) +
           "\nuser=" + quoted(credentials.user) + "password=" + quoted(credentials.password) +
           "[mysql]\ndatabase=" + quoted(credentials.database);
}

bool openDatabaseShell(const ActionContext& context, const QString& mysql,
                       const DatabaseCredentials& credentials, quint16 port) {
    const std::optional<QByteArray> options = mysqlOptions(credentials, port);
    if (!options) {
        context.report.warn(QStringLiteral(
            "mysql wurde nicht geöffnet: Die Zugangsdaten enthalten ein unzulässiges Zeichen."));
        return false;
    }
    const QString folder = context.host.privateFolder + QStringLiteral("/mysql");
    auto file = std::make_unique<QTemporaryFile>(folder + QStringLiteral("/XXXXXX.cnf")); // mode 0600
    if (!makePrivateFolder(folder) || !file->open() || file->write(*options) != options->size() ||
        !file->flush()) {
        context.report.warn(
            QStringLiteral("mysql wurde nicht geöffnet: In %1 kann nicht geschrieben werden.").arg(folder));
        return false;
    }
    // mysql reads the file that is open already, so that it is gone whatever becomes of the terminal.
    const QString script =
        QStringLiteral("exec 3<\"$1\" || exit; rm -f -- \"$1\"; exec \"$2\" --defaults-file=/dev/fd/3");
    const bool opened = openTerminal(context, {QStringLiteral("/bin/sh"), QStringLiteral("-c"), script,
                                               QStringLiteral("sh"), file->fileName(), mysql});
    QTemporaryFile* const kept = file.release();
    kept->setParent(&context.tunnels); // removed with the program at the latest
    QTimer::singleShot(opened ? startLimit : 0ms, kept, &QObject::deleteLater);
    return opened;
}
