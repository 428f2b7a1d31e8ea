#include "System/Native/LoginItem.h"

#include "System/AtomicFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {
/// A program's path inside of Exec=, where blanks part arguments, and quotes and percent signs mean
/// something.
QString execValue(QString path) {
    for (const char special : {'\\', '"', '`', '$'})
        path.replace(QLatin1Char(special), QLatin1Char('\\') + QString(QLatin1Char(special)));
    // The file's own text escapes backslashes once more.
    return QLatin1Char('"') +
           path.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
               .replace(QLatin1Char('%'), QLatin1String("%%")) +
           QLatin1Char('"');
}
} // namespace

bool LoginItem::isEnabled() const {
    QFile file(m_autostartFile);
    // Desktops turn an entry off without removing it.
    return file.open(QIODevice::ReadOnly) && !file.readAll().contains("\nHidden=true");
}

bool LoginItem::setEnabled(bool enabled) {
    if (!enabled)
        return !QFileInfo::exists(m_autostartFile) || QFile::remove(m_autostartFile);
    if (!QDir().mkpath(QFileInfo(m_autostartFile).path()))
        return false;
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=Harvellon Connect\n"
                                         "Exec=%1\n"
                                         "Icon=com.harvellon.HarvellonConnect\n"
                                         "X-GNOME-Autostart-enabled=true\n");
    return writeAtomically(m_autostartFile,
                           entry.arg(execValue(QCoreApplication::applicationFilePath())).toUtf8());
}

bool LoginItem::waitsForApproval() const {
    return false;
}
