#include "desktop/DesktopFixture.h"

#include <QProcess>
#include <QSystemTrayIcon>

/// The panel on a desktop that has no tray.
class TestWithoutTray : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;

  private Q_SLOTS:

    void initTestCase() {
        QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, false});
    }

    void panelOpensByItselfUnlessTheUserHasClosedIt() {
        {
            const DesktopFixture untouched(m_platform->server());
            QTRY_VERIFY(untouched.statusBar->isShown());
        }
        const DesktopFixture desktop(m_platform->server());
        desktop.statusBar->toggle();
        QVERIFY2(desktop.statusBar->isShown(), "it has opened by itself before");
        desktop.statusBar->toggle();
        QTest::qWait(1500);
        QVERIFY(!desktop.statusBar->isShown());
    }

    void panelThatWasLeftComesForwardInsteadOfClosing() {
        DesktopFixture desktop(m_platform->server());
        desktop.openPanel();
        QWindow other;
        other.show();
        other.requestActivate();
        QTest::qWait(400); // longer than a click
        desktop.statusBar->toggle();
        QVERIFY(QTest::qWaitForWindowActive(&desktop.statusBar->panel()));
        desktop.statusBar->toggle();
        QVERIFY(!desktop.statusBar->isShown());
    }
};

int main(int argc, char* argv[]) {
    QProcess server; // with nothing on it
    server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                          QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    if (!server.waitForReadyRead())
        qFatal("no X server");
    qputenv("DISPLAY", ':' + server.readLine().trimmed());
    const int failures = runOnDesktop<TestWithoutTray>(argc, argv);
    server.terminate();
    server.waitForFinished();
    return failures;
}

#include "tst_without_tray.moc"
