#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <csignal>

namespace {
constexpr int patience = 40000; // milliseconds; a cold browser on a busy machine takes its time

void setAccessibility(bool on) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
    call.setArguments({QStringLiteral("org.a11y.Status"), QStringLiteral("IsEnabled"),
                       QVariant::fromValue(QDBusVariant(on))});
    QDBusConnection::sessionBus().call(call);
}
} // namespace

/// The program against a real browser in real windows.
class TestBrowserTabReal : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_home;
    QProcess m_browser;

    [[nodiscard]] QString page(const char* name) const {
        return QUrl::fromLocalFile(m_home->filePath(QLatin1String(name))).toString();
    }

    [[nodiscard]] static QStringList browserArguments() {
        return {QStringLiteral("--no-sandbox"),
                QStringLiteral("--password-store=basic"),
                QStringLiteral("--no-first-run"),
                QStringLiteral("--disable-background-networking"),
                QStringLiteral("--disable-component-update"),
                QStringLiteral("--disable-sync")};
    }

    static void browse(const QStringList& arguments) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(QStringLiteral("chromium"), browserArguments() + arguments);
        process.waitForFinished();
    }

    /// What the program prints; what it says and an exclamation mark when it fails.
    static QString tab() {
        QProcess process;
        process.start(QStringLiteral(HARVELLON_BROWSER_TAB), QStringList());
        process.waitForFinished();
        const QString out = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
        const QString error = QString::fromUtf8(process.readAllStandardError()).trimmed();
        return process.exitCode() == 0 && error.isEmpty() ? out : error + QLatin1Char('!');
    }

    static QByteArray xdotool(const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral("xdotool"), arguments);
        process.waitForFinished();
        return process.readAllStandardOutput().trimmed();
    }

    static void type(const char* keys) { xdotool({QStringLiteral("key"), QLatin1String(keys)}); }

    /// Waits until a page's title is that of the focused window.
    static bool isInFront(const char* title) {
        return QTest::qWaitFor(
            [title] {
                return xdotool({QStringLiteral("getactivewindow"), QStringLiteral("getwindowname")})
                    .startsWith(title);
            },
            patience);
    }

    /// The same for a browser that has just been started: no window manager is bound to give it the focus.
    static bool comesToFront(const char* title) {
        return QTest::qWaitFor(
            [title] {
                const QByteArray window =
                    xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                             QStringLiteral("--name"), QLatin1Char('^') + QLatin1String(title)});
                xdotool({QStringLiteral("windowactivate"), QString::fromLatin1(window.split('\n').first())});
                return xdotool({QStringLiteral("getactivewindow"), QStringLiteral("getwindowname")})
                    .startsWith(title);
            },
            patience);
    }

  private Q_SLOTS:

    void init() {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("XDG_CONFIG_HOME", m_home->filePath(QStringLiteral("config")).toUtf8());
        for (const char* name : {"a", "b", "c", "d"}) {
            QFile file(m_home->filePath(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray("<!DOCTYPE html><title>Seite ") + name +
                       "</title><iframe srcdoc='<title>frame</title>x'></iframe>");
            QVERIFY(file.rename(file.fileName() + QStringLiteral(".html")));
        }
        m_browser.setStandardOutputFile(QProcess::nullDevice());
        m_browser.setStandardErrorFile(QProcess::nullDevice());
    }

    void cleanup() {
        m_browser.terminate();
        if (!m_browser.waitForFinished())
            m_browser.kill();
        setAccessibility(false);
    }

    void tabsAreFound_data() {
        QTest::addColumn<bool>("accessible");
        QTest::newRow("session file") << false;
        QTest::newRow("accessible document") << true;
    }

    void tabsAreFound() {
        QFETCH(bool, accessible);
        QCOMPARE(tab(), QStringLiteral("Google Chrome läuft nicht.!"));
        setAccessibility(accessible);
        QStringList arguments = browserArguments();
        if (accessible)
            arguments.append(QStringLiteral("--force-renderer-accessibility"));
        m_browser.start(QStringLiteral("chromium"), arguments + QStringList{page("a.html"), page("b.html")});
        QVERIFY(comesToFront("Seite a"));
        QTRY_COMPARE_WITH_TIMEOUT(tab(), page("a.html"), 10000);

        browse({QStringLiteral("--new-window"), page("c.html"), page("d.html")});
        QVERIFY(isInFront("Seite c"));
        QTRY_COMPARE_WITH_TIMEOUT(tab(), page("c.html"), 10000);
        type("ctrl+Tab");
        QVERIFY(isInFront("Seite d"));
        QCOMPARE(tab(), page("d.html")); // at once, before it is written down

        xdotool({QStringLiteral("search"), QStringLiteral("--name"), QStringLiteral("^Seite a"),
                 QStringLiteral("windowactivate"), QStringLiteral("--sync")});
        QVERIFY(isInFront("Seite a"));
        QCOMPARE(tab(), page("a.html"));
        type("ctrl+l");
        xdotool({QStringLiteral("type"), QStringLiteral("half.typed.example")});
        QCOMPARE(tab(), page("a.html"));
        if (accessible)
            return;

        browse({QStringLiteral("--incognito"), QStringLiteral("data:text/html,<title>Geheim</title>x")});
        QVERIFY(isInFront("Geheim"));
        QCOMPARE(tab(), QStringLiteral("Das vorderste Chrome-Fenster ist nicht gespeichert; bei "
                                       "Inkognito-Fenstern ist das immer so.!"));
    }
};

QTEST_GUILESS_MAIN(TestBrowserTabReal)
#include "tst_browser_tab_real.moc"
