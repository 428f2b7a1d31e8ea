#include "BrowserTab/FrontTab.h"

#include <QDir>
#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
constexpr qint32 firstWindow = 100;
constexpr qint32 secondWindow = 200;

QByteArray number(qint32 value) {
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray command(quint8 id, const QByteArray& content) {
    QByteArray bytes(2, '\0');
    qToLittleEndian(static_cast<quint16>(content.size() + 1), bytes.data());
    return bytes + char(id) + content;
}

QByteArray command(quint8 id, qint32 first, qint32 second) {
    return command(id, number(first) + number(second));
}

QByteArray page(qint32 tab, qint32 index, const QByteArray& address, const QString& title) {
    const QByteArray text = QStringEncoder(QStringEncoder::Utf16LE)(title);
    const auto padded = [](const QByteArray& bytes) {
        return bytes + QByteArray((4 - bytes.size() % 4) % 4, '\0');
    };
    const QByteArray content = number(tab) + number(index) + number(static_cast<qint32>(address.size())) +
                               padded(address) + number(static_cast<qint32>(title.size())) + padded(text);
    return command(6, number(static_cast<qint32>(content.size())) + content);
}

QByteArray tabOf(qint32 window, qint32 tab, qint32 index) {
    return command(0, window, tab) + command(2, tab, index);
}

QByteArray header(qint32 version = 3) {
    return "SNSS" + number(version);
}

/// Two windows: in the first the tabs a and b, in the second c, which was used last.
QByteArray session() {
    return header() + tabOf(firstWindow, 1, 0) + page(1, 0, "https://a.example/", u"Ä"_s) +
           tabOf(firstWindow, 2, 1) + page(2, 0, "https://b.example/", u"B"_s) + tabOf(secondWindow, 3, 0) +
           page(3, 0, "https://c.example/", u"C"_s) + command(8, firstWindow, 1) +
           command(8, secondWindow, 0) + command(20, number(secondWindow));
}

/// "address title*", the star for the window used last.
QString told(const QList<SavedWindow>& windows) {
    QStringList texts;
    for (const SavedWindow& window : windows)
        texts.append(window.address + u' ' + window.title + (window.isLastActive ? u"*"_s : QString()));
    return texts.join(u", "_s);
}

SavedWindow saved(const char* title, const char* address, bool lastActive = false) {
    return {QString::fromLatin1(title), QString::fromLatin1(address), lastActive};
}

ScreenWindow onScreen(const char* title, qint64 pid = 1, bool isApp = false) {
    return {QString::fromLatin1(title), pid, isApp};
}
} // namespace

class TestBrowserTab : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void sessionFiles_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("windows");
        const auto row = [](const char* name, const QByteArray& file, const QString& windows) {
            QTest::newRow(name) << file << windows;
        };
        const QString both = u"https://b.example/ B, https://c.example/ C*"_s;
        const QString next = u"https://b.example/ B, https://d.example/ D*"_s;
        const QByteArray d = page(3, 1, "https://d.example/", u"D"_s);
        row("torn tail", session() + d.chopped(5), both);
        row("unknown commands", session() + command(99, number(1)) + command(19, "xxx"), both);
        row("other tab", session() + command(8, firstWindow, 0),
            u"https://a.example/ Ä, https://c.example/ C*"_s);
        row("next page", session() + d + command(7, 3, 1), next);
        row("history cut before", session() + d + command(7, 3, 1) + command(11, 3, 1), next);
        row("history cut inside",
            session() + page(3, 1, "https://x.example/", {}) + page(3, 2, "https://d.example/", u"D"_s) +
                command(7, 3, 2) + command(24, number(3) + number(1) + number(1)),
            next);
        row("tab closed", session() + command(16, number(1)) + command(8, firstWindow, 0), both);
        row("window closed", session() + command(17, number(secondWindow)), u"https://b.example/ B"_s);
        row("window without a page", session() + tabOf(300, 9, 0) + command(8, 300, 0), both);
        row("length that lies",
            session() + command(6, number(0) + number(3) + number(0) + number(0x7fffffff)) +
                command(6, number(0) + number(3) + number(0) + number(-1)),
            both);
        row("empty", header(1), u""_s);
        row("encrypted", header(4), {});
        row("something else", "SQLite format 3", {});
        row("nothing", "", {});
    }

    void sessionFiles() {
        QFETCH(QByteArray, file);
        QFETCH(QString, windows);
        const std::optional<QList<SavedWindow>> found = windowsIn(file);
        QCOMPARE(found.has_value(), !windows.isNull());
        QCOMPARE(told(found.value_or(QList<SavedWindow>())), windows);
    }

    void frontWindows_data() {
        QTest::addColumn<QList<SavedWindow>>("windows");
        QTest::addColumn<QList<ScreenWindow>>("screen");
        QTest::addColumn<QString>("address"); // empty for none
        QTest::addColumn<bool>("current");
        const auto row = [](const char* name, const QList<SavedWindow>& windows,
                            const QList<ScreenWindow>& screen, const QString& address,
                            bool current) { QTest::newRow(name) << windows << screen << address << current; };
        const SavedWindow a = saved("A", "https://a");
        const SavedWindow b = saved("B", "https://b", true);
        const ScreenWindow shownA = onScreen("A - Chromium");
        const ScreenWindow shownB = onScreen("B - Chromium");
        const ScreenWindow changed = onScreen("(3) A! - Chromium");
        row("no screen: used last", {a, b}, {}, u"https://b"_s, true);
        row("web app above", {a, b}, {onScreen("B - Chromium", 1, true), shownA}, u"https://a"_s, true);
        row("same title twice: used last", {a, saved("A", "https://c", true)}, {shownA, shownA},
            u"https://c"_s, true);
        row("without a title", {saved("", "http://x.example/p/"), b},
            {onScreen("x.example/p - Chromium"), shownB}, u"http://x.example/p/"_s, true);
        row("changed its title", {a, b}, {changed, shownB}, u"https://a"_s, false);
        row("one of two not saved", {a, b}, {onScreen("Geheim - Chromium"), changed, shownB}, {}, false);
        row("nothing saved", {}, {shownA}, {}, false);
    }

    void frontWindows() {
        QFETCH(QList<SavedWindow>, windows);
        QFETCH(QList<ScreenWindow>, screen);
        QFETCH(QString, address);
        QFETCH(bool, current);
        const SessionTab tab = frontTab(windows, screen);
        QCOMPARE(tab.address, address);
        QCOMPARE(tab.isCurrent, current);
        QCOMPARE(tab.problem.isEmpty(), !address.isEmpty());
    }

    void offeredAddresses() {
        const QList<AccessibleDocument> documents{{u"A - Chromium"_s, u"https://a"_s},
                                                  {u"B - Chromium"_s, u"https://b"_s}};
        QCOMPARE(offeredAddress(documents, {onScreen("B - Chromium"), onScreen("A - Chromium")}),
                 u"https://b"_s);
        QCOMPARE(offeredAddress(documents, {}), QString());
        QCOMPARE(offeredAddress(documents.first(1), {}), u"https://a"_s);
        QCOMPARE(offeredAddress(documents.first(1), {onScreen("B - Chromium")}), QString());
    }

    void runningBrowsersAreTheOnesWithALiveLock() {
        QTemporaryDir home;
        const QString config = home.filePath(u"config"_s);
        const auto lay = [&](const QString& folder, const QString& lock, const QByteArray& content) {
            QDir().mkpath(folder + u"/Default/Sessions"_s);
            QFile::link(lock, folder + u"/SingletonLock"_s);
            QFile file(folder + u"/Default/Sessions/Session_1"_s);
            if (!file.open(QIODevice::WriteOnly) || file.write(content) < 0)
                qFatal("no session file");
        };
        const qint64 alive = ::getpid();
        lay(config + u"/google-chrome"_s, u"host-with-dash-99999999"_s, session());
        QVERIFY(runningBrowsers(config, home.path()).isEmpty());
        lay(config + u"/chromium"_s, u"host-%1"_s.arg(alive), session());
        const QList<RunningBrowser> browsers = runningBrowsers(config, home.path());
        QCOMPARE(browsers.size(), 1);
        QCOMPARE(browsers.first().pid, alive);
        QCOMPARE(tabInSessions(browsers, {}).address, u"https://c.example/"_s);
        QCOMPARE(tabInSessions(browsers, {onScreen("B - Chromium", alive)}).address, u"https://b.example/"_s);

        lay(home.filePath(u"snap/chromium/common/chromium"_s), u"box-2"_s, "no session");
        QCOMPARE(runningBrowsers(config, home.path()).size(), 2);
        QFile::remove(config + u"/chromium/SingletonLock"_s);
        QCOMPARE(tabInSessions(runningBrowsers(config, home.path()), {}).problem,
                 u"Die Sitzungsdatei von Chrome hat ein unbekanntes Format."_s);
    }
};

QTEST_GUILESS_MAIN(TestBrowserTab)
#include "tst_browser_tab.moc"
