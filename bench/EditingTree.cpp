#include "bench/EditingTree.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <stdexcept>

namespace {
constexpr int subfolders = 4; ///< of each folder, as long as there are any
constexpr int everyRare = 50; ///< one file of so many holds the rare word

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error("cannot write " + path.toStdString());
    // Git reads a file anew that is no older than its index.
    file.flush();
    file.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime);
}

QByteArray content(int number) {
    QByteArray text = "<?php\n// Datei " + QByteArray::number(number) + '\n';
    for (int line = 0; line < 10 + number % 90; ++line)
        text +=
            "$wert" + QByteArray::number(line) + " = rechne(" + QByteArray::number(number * line) + ");\n";
    return number % everyRare == 0 ? text + EditingTree::rareWord().toUtf8() + "();\n" : text;
}

void git(const QString& root, const QStringList& arguments) {
    QProcess process;
    process.setWorkingDirectory(root);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(QStringLiteral("git"),
                  QStringList{QStringLiteral("-c"), QStringLiteral("user.name=Bench"), QStringLiteral("-c"),
                              QStringLiteral("user.email=bench@example.org")} +
                      arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        throw std::runtime_error("git " + arguments.first().toStdString() + ": " +
                                 process.readAllStandardError().toStdString());
}
} // namespace

QString EditingTree::rareWord() {
    return QStringLiteral("selteneStelle");
}

QString EditingTree::folder(int number) const {
    const int perModule = (folders - 1 + modules - 1) / modules;
    QStringList parts;
    int inModule = number % perModule;
    for (; inModule > 0; inModule = (inModule - 1) / subfolders)
        parts.prepend(QStringLiteral("teil%1").arg(inModule));
    parts.prepend(QStringLiteral("modul%1").arg(number / perModule));
    return parts.join(QLatin1Char('/'));
}

QString EditingTree::file(int number) const {
    return folder(number % (folders - 1)) + QStringLiteral("/datei%1.php").arg(number);
}

void EditingTree::makeFiles(const QString& root) const {
    for (int number = 0; number < folders - 1; ++number)
        QDir().mkpath(root + QLatin1Char('/') + folder(number));
    for (int number = 0; number < files; ++number)
        write(root + QLatin1Char('/') + file(number), content(number));
}

void EditingTree::make(const QString& root) const {
    makeFiles(root);
    write(root + QStringLiteral("/.gitignore"), "node_modules/\n*.log\n");
    git(root, {QStringLiteral("init"), QStringLiteral("-q")});
    // A mount has other inode numbers and no times of change; git would read every file anew.
    git(root, {QStringLiteral("config"), QStringLiteral("core.checkStat"), QStringLiteral("minimal")});
    git(root, {QStringLiteral("config"), QStringLiteral("core.trustctime"), QStringLiteral("false")});
    git(root, {QStringLiteral("add"), QStringLiteral(".")});
    git(root,
        {QStringLiteral("commit"), QStringLiteral("-q"), QStringLiteral("-m"), QStringLiteral("Anfang")});
    git(root, {QStringLiteral("gc"), QStringLiteral("-q")});
}

void EditingTree::refreshIndex(const QString& root) {
    git(root, {QStringLiteral("status")});
}
