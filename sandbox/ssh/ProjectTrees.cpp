#include "sandbox/ssh/ProjectTrees.h"

#include "sandbox/PrivateFile.h"

#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace sandbox {

namespace {
QString hostFolder(const QString& treeRoot, const HostedProject& project) {
    return treeRoot + QLatin1Char('/') + project.domain;
}

// Straight into place: whole-or-nothing files would each wait for the disk.
void write(const QString& path, const QString& text) {
    makeFolder(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.flush())
        throw std::runtime_error("cannot write " + path.toStdString());
}

QString dotenv(const HostedProject& project) {
    return QStringLiteral("# Konfiguration von %1\n"
                          "APP_ENV=production\n"
                          "#DB_PASSWORD=alt\n"
                          "DB_CONNECTION=mysql\n"
                          "DB_DATABASE=%2\n"
                          "DB_USERNAME=%3 # nur lokal\n"
                          "DB_PASSWORD=\"%4\"\n")
        .arg(project.domain, databaseName(project), databaseUser(project), databasePassword(project));
}

QString settings(const HostedProject& project) {
    return QStringLiteral(
               "<?php\nreturn [\n    'DB' => [\n        'Connections' => [\n            'Default' => [\n"
               "                'charset' => 'utf8mb4',\n"
               "                'dbname' => '%1',\n"
               "                'host' => '127.0.0.1',\n"
               "                'password' => '%3',\n"
               "                'user' => '%2',\n"
               "            ],\n        ],\n    ],\n];\n")
        .arg(databaseName(project), databaseUser(project), databasePassword(project));
}
} // namespace

QString homeFolder(const QString& treeRoot, const HostedProject& project) {
    const QString host = hostFolder(treeRoot, project);
    return project.isSshType ? host : host + QStringLiteral("/users/ssh%1").arg(project.webspaceID);
}

QString mountedFolder(const QString& treeRoot, const HostedProject& project) {
    const QString host = hostFolder(treeRoot, project);
    return project.isSshType ? host : host + QStringLiteral("/web");
}

void layTree(const QString& treeRoot, const HostedProject& project) {
    const QString host = hostFolder(treeRoot, project);
    const QString web = host + QStringLiteral("/web");
    const QString configuration =
        web + (project.isSshType ? QStringLiteral("/.env") : QStringLiteral("/config/system/settings.php"));
    if (QFileInfo::exists(configuration))
        return;
    const QString page = QStringLiteral("<?php\necho '%1';\n").arg(project.name);
    if (project.isSshType) {
        write(web + QStringLiteral("/index.php"), page);
        write(web + QStringLiteral("/css/main.css"), QStringLiteral("body { margin: 0; }\n"));
        write(host + QStringLiteral("/log/access.log"), QStringLiteral("GET / 200\n"));
    } else {
        write(web + QStringLiteral("/public/index.php"), page);
        write(web + QStringLiteral("/public/fileadmin/vorlagen/start.html"),
              QStringLiteral("<h1>Start</h1>\n"));
        write(web + QStringLiteral("/public/fileadmin/pdfs/liste.pdf"), QStringLiteral("%PDF-1.4\n"));
        makeFolder(homeFolder(treeRoot, project));
    }
    // Written last: its existence marks the tree as complete.
    write(configuration, project.isSshType ? dotenv(project) : settings(project));
}

QString databaseName(const HostedProject& project) {
    return QStringLiteral("db%1").arg(project.webspaceID);
}

QString databaseUser(const HostedProject& project) {
    return QStringLiteral("u%1").arg(project.webspaceID);
}

QString databasePassword(const HostedProject& project) {
    return QStringLiteral("ge&heim-%1").arg(project.webspaceID);
}

} // namespace sandbox
