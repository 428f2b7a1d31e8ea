#include "System/Git/GitFiles.h"

namespace {
/// Text between quotes in a file of git, where a backslash escapes.
QByteArray quoted(QString text) {
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    return '"' + text.toUtf8() + '"';
}

/// A path as a pattern that matches nothing else.
QString literalPattern(QString path) {
    path.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    for (const char special : {'*', '?', '['})
        path.replace(QLatin1Char(special), QLatin1Char('\\') + QString(QLatin1Char(special)));
    return path;
}
} // namespace

QString GitFiles::configPath(const HostSystem& host) {
    return host.privateFolder + QStringLiteral("/git/config");
}

QString GitFiles::mountsPath(const HostSystem& host) {
    return host.privateFolder + QStringLiteral("/git/mounts");
}

QByteArray GitFiles::config(const QString& mountRoot, const QStringList& trusted) {
    QByteArray text = "# Harvellon Connect schreibt diese Datei neu, wenn sich ein Mount ändert.\n"
                      "[includeIf " +
                      quoted(QStringLiteral("gitdir:") + literalPattern(mountRoot) + QLatin1Char('/')) +
                      "]\n\tpath = mounts\n";
    if (!trusted.isEmpty())
        text += "[safe]\n";
    for (const QString& folder : trusted)
        text += "\tdirectory = " + quoted(mountRoot + QLatin1Char('/') + folder) + '\n';
    return text;
}

QByteArray GitFiles::mounts() {
    // Sizes and whole seconds of the last change are all that means the same at each mount.
    return "[core]\n\tcheckStat = minimal\n\ttrustctime = false\n";
}
