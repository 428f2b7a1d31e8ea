#include "MounterFixture.h"

#include "Mounting/Ending/ServerState.h"
#include "Mounting/WarmUp/FolderCrawl.h"

#include <QElapsedTimer>
#include <QProcess>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
constexpr int answeredFromMemory = 700; // milliseconds; a frozen server never answers

/// Whether the caches alone can answer. Asks from another program, because it hangs when they cannot.
bool isAnswered(sandbox::SlowLine& line, const QString& path) {
    line.freezeConnections();
    QProcess look;
    look.start(QStringLiteral("/usr/bin/ls"), {QStringLiteral("-l"), path});
    const bool answered = look.waitForFinished(answeredFromMemory);
    line.thawConnections();
    look.waitForFinished();
    return answered;
}

void makeFiles(const QString& root, const QStringList& folders) {
    for (const QString& folder : folders) {
        QVERIFY(QDir().mkpath(root + folder));
        QFile file(root + folder + u"/datei.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
}
} // namespace

/// The names of a mount are read in advance, and nothing else suffers from it.
class TestWarmUp : public MounterFixture {
    Q_OBJECT

    WarmUpLimits m_noReaders{0};

    /// Walks through the mount with eight readers, to the end.
    void walk(const WarmUpLimits& limits = {}) const {
        FolderCrawl crawl(QFile::encodeName(mountPoint(0)), limits);
        std::vector<std::thread> readers;
        for (int i = 0; i < limits.readers; ++i)
            readers.emplace_back([&crawl] { crawl.read(); });
        for (std::thread& reader : readers)
            reader.join();
        QVERIFY(crawl.isOver());
    }

    void makeTree() const {
        const QString root = project(0).path + QLatin1Char('/');
        const QString many = root + u"web/viele/"_s;
        QVERIFY(QDir().mkpath(many));
        for (int i = 0; i < 2'500; ++i) // long names, so that the folder itself is large
            QFile::link(u"."_s, many + QString::number(i).rightJustified(240, u'x'));
        makeFiles(root, {u"web/a/b/c/d"_s, u"web/e"_s, u"web/node_modules/x"_s, u"web/Cache/y"_s,
                         u"web/.git/objects/ab"_s, u"web/.git/refs"_s});
        QFile::link(u".."_s, root + u"web/e/nach-oben"_s); // a walk that followed it would not end
    }

  private Q_SLOTS:

    void namesAreAnsweredWithoutTheServer_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("known");
        QTest::newRow("folder") << u"web/a/b/c/d"_s << true;
        QTest::newRow("git's folder") << u"web/.git/refs"_s << true;
        QTest::newRow("large folder") << u"web/viele"_s << false;
        QTest::newRow("git's objects") << u"web/.git/objects/ab"_s << false;
        QTest::newRow("packages") << u"web/node_modules/x"_s << false;
        QTest::newRow("cache") << u"web/Cache/y"_s << false;
    }

    void namesAreAnsweredWithoutTheServer() {
        QFETCH(const QString, path);
        QFETCH(const bool, known);
        makeTree();
        MountLimits limits = MounterFixture::limits();
        limits.warmUp = m_noReaders;
        m_mounter = mounter(host(), limits);
        useLine();
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        walk();
        QCOMPARE(isAnswered(*m_line, mountPoint(0) + QLatin1Char('/') + path), known);
    }

    void theNumberOfFoldersIsLimited() {
        makeTree();
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        WarmUpLimits limits;
        limits.folders = 2; // the root and what comes first below
        walk(limits);
        walk({8, 2'000, 0s, 0ms}); // no time: over at once
    }

    void aMountEndsInTheMiddle_data() {
        QTest::addColumn<QString>("event");
        for (const char* event : {"disconnect", "sleep", "end of the program"})
            QTest::newRow(event) << QString::fromLatin1(event);
    }

    /// With a round trip of 300 ms the readers are under way for many seconds.
    void aMountEndsInTheMiddle() {
        QFETCH(const QString, event);
        useLine({150ms, 0});
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QTest::qWait(400);
        // Its own requests are not taken for somebody's data.
        QCOMPARE(await(writtenDomains(m_mounter->sessions().values(), {})), QStringList());
        m_mounter->warmUp(hosted(0).domain);
        QTest::qWait(200);
        if (event == "disconnect"_L1)
            QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::ended);
        else if (event == "sleep"_L1)
            QCOMPARE(await(m_mounter->detachIdle()).size(), 1);
        else
            await(m_mounter->unmountAll());
        verifyNothingLeft();
    }

    void aSilentServerDelaysNoEnd() {
        useLine();
        m_line->setQuality({150ms, 0});
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        m_line->freezeConnections();
        QElapsedTimer time;
        time.start();
        await(m_mounter->unmountAll());
        QVERIFY(time.elapsed() < 5'000);
    }
};

QTEST_GUILESS_MAIN(TestWarmUp)
#include "tst_warm_up.moc"
