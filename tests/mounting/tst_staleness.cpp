#include "MounterFixture.h"

#include "Mounting/Ending/ServerState.h"
#include "Mounting/WarmUp/FolderCrawl.h"

#include <QElapsedTimer>
#include <QProcess>

#include <sys/stat.h>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
void store(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(file.write(content), content.size());
}

QByteArray size(const QString& path) {
    struct stat status {};

    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? QByteArray::number(status.st_size)
                                                                      : QByteArray("-");
}

/// As editors load a file: they look at it, open it and read as much as it is said to hold.
QByteArray content(const QString& path) {
    size(path);
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(file.size()) : QByteArray("-");
}

bool isListed(const QString& folder, const QString& name) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden).contains(name);
}

/// Whether the caches alone can answer. Asks from another program, because it hangs when they cannot.
bool isAnswered(sandbox::SlowLine& line, const QString& path) {
    constexpr int limit = 700; // milliseconds; a frozen server never answers
    line.freezeConnections();
    QProcess look;
    look.start(QStringLiteral("/usr/bin/ls"), {QStringLiteral("-l"), path});
    const bool answered = look.waitForFinished(limit) && look.exitCode() == 0;
    line.thawConnections();
    look.waitForFinished();
    return answered;
}
} // namespace

/// What a mount shows of changes that were made on the server, and when; that nobody's save is lost, and that
/// names are read in advance without harm to anything else.
class TestStaleness : public MounterFixture {
    Q_OBJECT

    static constexpr int lifetime = 2; ///< seconds that sshfs remembers here; longer in the program

    void mount(int readers, int seconds = 25) {
        MountLimits limits = MounterFixture::limits();
        limits.warmUp.readers = readers;
        HostSystem host = this->host();
        for (QString& option : host.platformMountOptions) {
            if (option.startsWith("cache_timeout="_L1))
                option = u"cache_timeout=%1"_s.arg(seconds);
        }
        m_mounter = mounter(host, limits);
        mountFirst();
    }

    void storeInPlace(const QString& name, const QByteArray& content) {
        store(onServer(u"daneben"_s), content);
        QCOMPARE(::rename(QFile::encodeName(onServer(u"daneben"_s)).constData(),
                          QFile::encodeName(onServer(name)).constData()),
                 0);
    }

  private Q_SLOTS:

    void colleaguesChangesAreSeen() {
        const QHash<QString, QByteArray> changes{{u"new"_s, "neu!"},  {u"grown"_s, "gewachsen"},
                                                 {u"shrunk"_s, "kl"}, {u"changed"_s, "neu"},
                                                 {u"deleted"_s, "-"}, {u"replaced"_s, "ersetzt"}};
        const QStringList names = changes.keys();
        for (const QString& name : names) {
            if (name != "new"_L1)
                store(onServer(name), "alt");
        }
        mount(0, lifetime);
        isListed(mounted(u"."_s), {}); // what was looked at is remembered
        for (const QString& name : names)
            content(mounted(name));
        QTest::qWait(1'100); // the server tells times in whole seconds, and "changed" keeps its size
        for (const QString& name : names) {
            if (name == "deleted"_L1)
                QVERIFY(QFile::remove(onServer(name)));
            else if (name == "replaced"_L1)
                storeInPlace(name, changes.value(name));
            else
                store(onServer(name), changes.value(name));
            if (name != "new"_L1) // whoever opens a file reads the server's content
                QCOMPARE(content(mounted(name)), changes.value(name));
        }
        QTest::qWait((lifetime + 1) * 1'000);
        for (const QString& name : names) {
            QCOMPARE(isListed(mounted(u"."_s), name), name != "deleted"_L1);
            QCOMPARE(content(mounted(name)), changes.value(name));
        }
    }

    void ownSavesAreNeverWrong() {
        const QStringList befores{u"nothing"_s, u"changed"_s, u"removed"_s, u"replaced"_s, u"asked for"_s};
        for (const QString& before : befores) {
            if (before != "asked for"_L1) // before it existed
                store(onServer(before), "alt");
        }
        mountFirst();
        for (const QString& name : befores) {
            size(mounted(name));
            isListed(mounted(u"."_s), name);
            if (name == "changed"_L1)
                store(onServer(name), "etwas viel Längeres als vorher");
            else if (name == "replaced"_L1)
                storeInPlace(name, "ersetzt");
            else if (name == "removed"_L1) { // the first attempt fails, and says so
                QVERIFY(QFile::remove(onServer(name)));
                QTRY_VERIFY(QFile(mounted(name)).open(QIODevice::WriteOnly));
            }
            for (const QByteArray saved : {"erste Fassung", "zweite", "dritte, wieder länger"}) {
                store(mounted(name), saved);
                QCOMPARE(content(onServer(name)), saved);
                QCOMPARE(content(mounted(name)), saved);
                QVERIFY(isListed(mounted(u"."_s), name));
            }
            // As editors that keep the old file until the new one is complete.
            const QByteArray second = "über eine zweite Datei";
            store(mounted(name + u"~"_s), second);
            QCOMPARE(::rename(QFile::encodeName(mounted(name + u"~"_s)).constData(),
                              QFile::encodeName(mounted(name)).constData()),
                     0);
            QCOMPARE(content(onServer(name)), second);
            QCOMPARE(content(mounted(name)), second);
            store(onServer(name), "zuletzt die Kollegin");
            QCOMPARE(content(mounted(name)), QByteArray("zuletzt die Kollegin"));
        }
    }

    void aNameThatDidNotExistIsSeenASecondLater() {
        mountFirst();
        QCOMPARE(content(mounted(u"gefragt"_s)), QByteArray("-"));
        store(onServer(u"gefragt"_s), "von der Kollegin");
        QTest::qWait(1'300);
        QVERIFY(QFile::exists(mounted(u"gefragt"_s))); // a program that looks first overwrites nothing
    }

    void savesGoOnAfterANewConnection() {
        const QString name = u"neu-verbunden.txt"_s;
        store(onServer(name), "alt");
        mountFirst();
        QCOMPARE(content(mounted(name)), QByteArray("alt"));
        for (const pid_t process : processesWith(domain())) {
            if (QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(process)).endsWith(u"/ssh"_s))
                QCOMPARE(::kill(process, SIGKILL), 0);
        }
        store(onServer(name), "inzwischen");
        QTRY_COMPARE(content(mounted(name)), QByteArray("inzwischen"));
        store(mounted(name), "nachher");
        QCOMPARE(content(onServer(name)), QByteArray("nachher"));
    }

    void namesAreReadInAdvance() {
        for (const char* folder :
             {"a/b/c/d", "e", "node_modules/x", "Cache/y", ".git/objects/ab", ".git/refs"})
            QVERIFY(QDir().mkpath(onServer(QString::fromLatin1(folder))));
        QVERIFY(QDir().mkpath(onServer(u"viele"_s)));
        for (int i = 0; i < 2'500; ++i) // long names, so that the folder itself is large
            QFile::link(u"."_s, onServer(u"viele/"_s + QString::number(i).rightJustified(240, u'x')));
        QVERIFY(QFile::link(u".."_s, onServer(u"e/nach-oben"_s))); // a walk that followed it would not end
        useLine();
        mount(0);
        const auto walk = [this](const WarmUpLimits& limits) {
            FolderCrawl crawl(QFile::encodeName(mountPoint(0)), limits);
            std::vector<std::thread> readers;
            for (int i = 0; i < limits.readers; ++i)
                readers.emplace_back([&crawl] { crawl.read(); });
            for (std::thread& reader : readers)
                reader.join();
            QVERIFY(crawl.isOver());
        };
        WarmUpLimits limits;
        limits.folders = 2; // the root and what comes first below
        walk(limits);
        walk({8, 2'000, 0s, 0ms}); // no time: over at once
        QVERIFY(!isAnswered(*m_line, mounted(u"e"_s)));
        walk({});
        for (const char* known : {"a/b/c/d", ".git/refs"})
            QVERIFY2(isAnswered(*m_line, mounted(QString::fromLatin1(known))), known);
        for (const char* unknown : {"viele", ".git/objects/ab", "node_modules/x", "Cache/y"})
            QVERIFY2(!isAnswered(*m_line, mounted(QString::fromLatin1(unknown))), unknown);
    }

    void aMountEndsWhileItsNamesAreRead_data() {
        QTest::addColumn<QString>("event");
        for (const char* event : {"disconnect", "sleep", "silent disconnect", "silent end"})
            QTest::newRow(event) << QString::fromLatin1(event);
    }

    /// With a round trip of 300 ms the readers are under way for many seconds.
    void aMountEndsWhileItsNamesAreRead() {
        QFETCH(const QString, event);
        useLine({150ms, 0});
        mountFirst();
        QTest::qWait(400);
        // Its own requests are not taken for somebody's data.
        QCOMPARE(await(writtenDomains(m_mounter->sessions().values(), {})), QStringList());
        m_mounter->warmUp(domain());
        QTest::qWait(200);
        QElapsedTimer time;
        time.start();
        if (event.startsWith(u"silent"_s))
            m_line->freezeConnections();
        if (event == "sleep"_L1)
            QCOMPARE(await(m_mounter->detachIdle()).size(), 1);
        else if (event == "silent end"_L1)
            await(m_mounter->unmountAll());
        else
            QCOMPARE(unmountFirst(), UnmountResult::ended);
        QVERIFY(time.elapsed() < 5'000);
        verifyNothingLeft();
    }
};

QTEST_GUILESS_MAIN(TestStaleness)
#include "tst_staleness.moc"
