#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {
constexpr int patience = 40000; // milliseconds; a cold browser on a busy machine takes its time

void setAccessibility(bool on) {
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                                       u"org.freedesktop.DBus.Properties"_s, u"Set"_s);
    call.setArguments({u"org.a11y.Status"_s, u"IsEnabled"_s, QVariant::fromValue(QDBusVariant(on))});
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

    static QStringList browserArguments(const QStringList& further) {
        return QStringList{u"--no-sandbox"_s,   u"--password-store=basic"_s,
                           u"--no-first-run"_s, u"--disable-background-networking"_s,
                           u"--disable-sync"_s, u"--disable-component-update"_s} +
               further;
    }

    /// What a program prints; what it says and an exclamation mark when it fails.
    static QString output(const QString& program, const QStringList& arguments = {}) {
        QProcess process;
        process.start(program, arguments);
        process.waitForFinished();
        const QString out = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
        const QString error = QString::fromUtf8(process.readAllStandardError()).trimmed();
        return process.exitCode() == 0 ? out : error + u'!';
    }

    static QString tab() { return output(QStringLiteral(HARVELLON_BROWSER_TAB)); }

    static void browse(const QStringList& further) { output(u"chromium"_s, browserArguments(further)); }

    static QString xdotool(const QStringList& arguments) { return output(u"xdotool"_s, arguments); }

    /// Waits until a page's title is that of the focused window. A browser that has just been started is
    /// raised: no window manager is bound to give it the focus.
    static bool isInFront(const QString& title, bool raise = false) {
        const auto isThere = [title, raise] {
            if (raise) {
                const QString found = xdotool({u"search"_s, u"--onlyvisible"_s, u"--name"_s, u'^' + title});
                xdotool({u"windowactivate"_s, found.section(u'\n', 0, 0)});
            }
            return xdotool({u"getactivewindow"_s, u"getwindowname"_s}).startsWith(title);
        };
        return QTest::qWaitFor(isThere, patience);
    }

  private Q_SLOTS:

    void init() {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("XDG_CONFIG_HOME", m_home->filePath(u"config"_s).toUtf8());
        for (const char* name : {"a", "b", "c", "d"}) {
            QFile file(m_home->filePath(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray("<!DOCTYPE html><title>Seite ") + name +
                       "</title><iframe srcdoc='<title>frame</title>x'></iframe>");
            QVERIFY(file.rename(file.fileName() + u".html"_s));
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
        QCOMPARE(tab(), u"Google Chrome läuft nicht.!"_s);
        setAccessibility(accessible);
        QStringList arguments{page("a.html"), page("b.html")};
        if (accessible)
            arguments.append(u"--force-renderer-accessibility"_s);
        m_browser.start(u"chromium"_s, browserArguments(arguments));
        QVERIFY(isInFront(u"Seite a"_s, true));
        QTRY_COMPARE_WITH_TIMEOUT(tab(), page("a.html"), 10000);

        browse({u"--new-window"_s, page("c.html"), page("d.html")});
        QVERIFY(isInFront(u"Seite c"_s));
        QTRY_COMPARE_WITH_TIMEOUT(tab(), page("c.html"), 10000);
        xdotool({u"key"_s, u"ctrl+Tab"_s});
        QVERIFY(isInFront(u"Seite d"_s));
        QCOMPARE(tab(), page("d.html")); // at once, before it is written down

        xdotool({u"search"_s, u"--name"_s, u"^Seite a"_s, u"windowactivate"_s, u"--sync"_s});
        QVERIFY(isInFront(u"Seite a"_s));
        QCOMPARE(tab(), page("a.html"));
        xdotool({u"key"_s, u"ctrl+l"_s});
        xdotool({u"type"_s, u"half.typed.example"_s});
        QCOMPARE(tab(), page("a.html"));
        if (accessible)
            return;

        browse({u"--incognito"_s, u"data:text/html,<title>Geheim</title>x"_s});
        QVERIFY(isInFront(u"Geheim"_s));
        QCOMPARE(tab(), u"Das vorderste Chrome-Fenster ist nicht gespeichert; bei "
                        "Inkognito-Fenstern ist das immer so.!"_s);
    }
};

QTEST_GUILESS_MAIN(TestBrowserTabReal)
#include "tst_browser_tab_real.moc"
