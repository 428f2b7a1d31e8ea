#include "Actions/OpenDatabase.h"

#include "Actions/VSCodeLauncher.h"
#include "System/Reporter.h"
#include "System/Shell.h"
#include "System/Ssh/SharedConnections.h"
#include "sandbox/Sandbox.h"
#include "support/Await.h"
#include "support/Leftovers.h"

#include <QDir>
#include <QFile>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
class LastLine : public Reporter {
  public:
    QString text;

  private:
    void log(const QString& message, ActivityLogLevel /*level*/) override { text = message; }

    void setLastError(std::optional<QString> /*error*/) override {}

    void setAccountError(std::optional<QString> /*error*/) override {}
};

void write(const QString& path, const QByteArray& content, QFile::Permissions more = {}) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() ||
        !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | more))
        qFatal("cannot write %s", qPrintable(path));
}
} // namespace

/// Who gets the address of a database, with the desktop's own xdg-mime and xdg-open.
class TestDatabase : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    QTemporaryDir m_home;

    /// A program that writes down what it is given.
    void install(const QString& program, const QByteArray& end) const {
        const QByteArray record = QFile::encodeName(m_home.filePath(program) + u".got"_s);
        write(m_home.filePath(program), "#!/bin/sh\nprintf %s \"$1\" >" + record + '\n' + end + '\n',
              QFile::ExeOwner);
    }

    [[nodiscard]] QByteArray gotBy(const QString& program) const {
        QFile file(m_home.filePath(program) + u".got"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, true});
        QVERIFY(m_platform->hasSsh());
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.filePath(u"data"_s)));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(u"config"_s)));
        qputenv("BROWSER", QFile::encodeName(m_home.filePath(u"browser"_s)));
    }

    void cleanup() {
        for (const QString& folder : {u"data"_s, u"config"_s})
            QDir(m_home.filePath(folder)).removeRecursively();
        for (const QString& program : {u"client"_s, u"browser"_s})
            QFile::remove(m_home.filePath(program + u".got"_s));
    }

    void passwordReachesTheDatabaseClientAlone_data() {
        QTest::addColumn<QByteArray>("client"); // how it ends; empty: there is none
        QTest::addColumn<bool>("registered");
        QTest::addColumn<QByteArray>("got"); // the beginning of the address that the client is given
        QTest::addColumn<QString>("told");
        const QString opened = u"Oeffne % DB in Sequel Ace ("_s;
        const QString missing = u"Kein Programm öffnet Datenbank-Adressen (mysql:). "
                                "Bitte einen Datenbank-Client installieren."_s;
        QTest::newRow("client") << QByteArray("exit 0") << true << QByteArray("mysql://") << opened;
        QTest::newRow("client that fails")
            << QByteArray("exit 1") << true << QByteArray("mysql://") << opened;
        QTest::newRow("client without its program") << QByteArray("gone") << true << QByteArray() << opened;
        QTest::newRow("none") << QByteArray() << false << QByteArray() << missing;
        QTest::newRow("uninstalled") << QByteArray() << true << QByteArray() << missing;
    }

    void passwordReachesTheDatabaseClientAlone() {
        QFETCH(QByteArray, client);
        QFETCH(bool, registered);
        QFETCH(QByteArray, got);
        QFETCH(QString, told);
        install(u"browser"_s, "exit 0");
        install(u"client"_s, client);
        if (client == "gone")
            QVERIFY(QFile::remove(m_home.filePath(u"client"_s)));
        if (!client.isEmpty())
            write(m_home.filePath(u"data/applications/client.desktop"_s),
                  "[Desktop Entry]\nType=Application\nName=Client\nMimeType=x-scheme-handler/mysql;\nExec=" +
                      QFile::encodeName(m_home.filePath(u"client"_s)) + " %u\n");
        if (registered)
            write(m_home.filePath(u"config/mimeapps.list"_s),
                  "[Default Applications]\nx-scheme-handler/mysql=client.desktop\n");
        HostSystem host = HostSystem::linuxDesktop(m_home.path());
        host.ssh = m_platform->ssh().binFolder() + u"/ssh"_s;
        host.socketFolder = m_home.filePath(u"s"_s);
        Shell shell;
        QNetworkAccessManager network;
        LastLine report;
        VSCodeLauncher editor(host, shell);
        SharedConnections shared(host, shell);
        ActionContext context{host, shell, network, report, editor, shared, {}, {}, {}, {}, {}, {}, {}};
        const sandbox::HostedProject hosted = m_platform->people().at(0).projects.at(0);
        const Project project{hosted.domain, hosted.name, QString::number(hosted.webspaceID), u"/"_s,
                              ProjectType::ssh};
        await(openDatabase(context, project, false));
        QTRY_VERIFY(got.isEmpty() || !gotBy(u"client"_s).isEmpty());
        QTRY_COMPARE(processesWith(m_home.path()), QList<pid_t>()); // the opener has the address as argument
        QCOMPARE(gotBy(u"client"_s).left(got.size()), got);
        QCOMPARE(gotBy(u"browser"_s), QByteArray());
        QVERIFY2(report.text.startsWith(told.replace(u'%', project.domain)), qPrintable(report.text));
    }

    /// As when the client is uninstalled between the question and the opening.
    void openerOfSecretsKnowsNoBrowser() {
        const HostSystem host = HostSystem::linuxDesktop(m_home.path());
        install(u"browser"_s, "exit 0");
        Shell shell;
        const auto open = [&](const ExternalCommand& opener, const QString& address) {
            const QStringList arguments = opener.argumentsFor(address);
            return await(shell.run(opener.executable, arguments, Shell::noLimit)).exitCode;
        };
        QVERIFY(open(host.secretOpener, u"mysql://secret"_s) != 0);
        QCOMPARE(gotBy(u"browser"_s), QByteArray());
        QCOMPARE(open(host.opener, u"mysql://test"_s), 0);
        QCOMPARE(gotBy(u"browser"_s), QByteArray("mysql://test"));
    }
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "tst_database.moc"
