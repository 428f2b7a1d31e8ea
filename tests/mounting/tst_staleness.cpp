#include "MounterFixture.h"

#include <QProcess>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
void store(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(file.write(content), content.size());
}

QByteArray content(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("-");
}

QByteArray size(const QString& path) {
    struct stat status {};

    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? QByteArray::number(status.st_size)
                                                                      : QByteArray("-");
}

bool isListed(const QString& folder, const QString& name) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden).contains(name);
}

QString optionsThatForgetAfter(QStringList options, int seconds) {
    for (QString& option : options) {
        if (option.startsWith("cache_timeout="_L1))
            option = option.section(QLatin1Char('='), 0, 0) + u"=%1"_s.arg(seconds);
    }
    return options.join(QLatin1Char(','));
}
} // namespace

/// What a mount shows of changes that were made on the server, and when; and that nobody's save is lost.
class TestStaleness : public MounterFixture {
    Q_OBJECT

    static constexpr int lifetime = 2; ///< seconds that sshfs remembers here; longer in the program

    [[nodiscard]] QString onServer(const QString& name) const { return project(0).path + u"/web/"_s + name; }

    [[nodiscard]] QString mounted(const QString& name) const { return mountPoint(0) + u"/web/"_s + name; }

    void mountWithShortMemory() {
        HostSystem host = this->host();
        host.platformMountOptions =
            optionsThatForgetAfter(host.platformMountOptions, lifetime).split(QLatin1Char(','));
        m_mounter = mounter(host);
        QCOMPARE(mountFailure(project(0)), u"none"_s);
    }

  private Q_SLOTS:

    void colleaguesChangesAreSeen_data() {
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("listed");
        QTest::addColumn<QByteArray>("size");    ///< as the mount tells it at the end
        QTest::addColumn<QByteArray>("content"); ///< as it is read at once, and at the end
        QTest::newRow("new") << u"new"_s << true << QByteArray("4") << QByteArray("neu!");
        QTest::newRow("grown") << u"grown"_s << true << QByteArray("9") << QByteArray("gewachsen");
        QTest::newRow("other content of the same size")
            << u"changed"_s << true << QByteArray("3") << QByteArray("neu");
        QTest::newRow("deleted") << u"deleted"_s << false << QByteArray("-") << QByteArray("-");
        QTest::newRow("replaced") << u"replaced"_s << true << QByteArray("7") << QByteArray("ersetzt");
    }

    void colleaguesChangesAreSeen() {
        QFETCH(const QString, change);
        QFETCH(const bool, listed);
        QFETCH(const QByteArray, content);
        const QString name = u"kollege-%1.txt"_s.arg(change);
        if (change != "new"_L1)
            store(onServer(name), "alt");
        mountWithShortMemory();
        isListed(mounted(u"."_s), name); // what was looked at is remembered
        size(mounted(name));
        ::content(mounted(name));
        if (change == "deleted"_L1) {
            QVERIFY(QFile::remove(onServer(name)));
        } else if (change == "replaced"_L1) {
            store(onServer(u"daneben"_s), content);
            QCOMPARE(::rename(QFile::encodeName(onServer(u"daneben"_s)).constData(),
                              QFile::encodeName(onServer(name)).constData()),
                     0);
        } else {
            QTest::qWait(1'100); // the server tells times in whole seconds
            store(onServer(name), content);
        }
        if (change != "new"_L1) // whoever opens a file reads the server's content
            QCOMPARE(::content(mounted(name)), content);
        QTest::qWait((lifetime + 1) * 1'000);
        QCOMPARE(isListed(mounted(u"."_s), name), listed);
        QTEST(size(mounted(name)), "size");
        QCOMPARE(::content(mounted(name)), content);
    }

    void ownSavesAreNeverWrong_data() {
        QTest::addColumn<QString>("before");
        for (const char* before : {"nothing", "colleague changed it", "colleague removed it",
                                   "colleague replaced it", "asked for it before it existed"})
            QTest::newRow(before) << QString::fromLatin1(before);
    }

    void ownSavesAreNeverWrong() {
        QFETCH(const QString, before);
        const QString name = u"eigene.txt"_s;
        const bool exists = before != "asked for it before it existed"_L1;
        QFile::remove(onServer(name));
        if (exists)
            store(onServer(name), "alt");
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        size(mounted(name));
        isListed(mounted(u"."_s), name);
        if (before == "colleague changed it"_L1)
            store(onServer(name), "etwas viel Längeres als vorher");
        else if (before == "colleague removed it"_L1)
            QVERIFY(QFile::remove(onServer(name)));
        else if (before == "colleague replaced it"_L1) {
            store(onServer(u"daneben"_s), "ersetzt");
            QVERIFY(QFile::remove(onServer(name)));
            QVERIFY(QFile::rename(onServer(u"daneben"_s), onServer(name)));
        }
        if (before == "colleague removed it"_L1) // the first attempt fails, and says so
            QTRY_VERIFY(QFile(mounted(name)).open(QIODevice::WriteOnly));
        for (const QByteArray saved : {"erste Fassung", "zweite", "dritte, wieder länger"}) {
            store(mounted(name), saved);
            QCOMPARE(content(onServer(name)), saved);
            QCOMPARE(content(mounted(name)), saved);
            QCOMPARE(size(mounted(name)), QByteArray::number(saved.size()));
            QVERIFY(isListed(mounted(u"."_s), name));
        }
        // As editors that keep the old file until the new one is complete.
        store(mounted(name + u"~"_s), "über eine zweite Datei");
        QCOMPARE(::rename(QFile::encodeName(mounted(name + u"~"_s)).constData(),
                          QFile::encodeName(mounted(name)).constData()),
                 0);
        QCOMPARE(content(onServer(name)), QByteArray("über eine zweite Datei"));
        QCOMPARE(content(mounted(name)), QByteArray("über eine zweite Datei"));
    }

    void aNameThatDidNotExistIsSeenASecondLater() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile::remove(onServer(u"neu"_s));
        QCOMPARE(size(mounted(u"neu"_s)), QByteArray("-"));
        store(onServer(u"neu"_s), "von der Kollegin");
        QTest::qWait(1'300);
        QVERIFY(QFile::exists(mounted(u"neu"_s))); // a program that looks first overwrites nothing
    }

    void theLastOfTwoSavesWins() {
        const QString name = u"zu-zweit.txt"_s;
        store(onServer(name), "alt");
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        for (int turn = 0; turn < 3; ++turn) {
            const QByteArray own = "eigene " + QByteArray::number(turn);
            const QByteArray others = "die der Kollegin, Runde " + QByteArray::number(turn);
            store(mounted(name), own);
            QCOMPARE(content(onServer(name)), own);
            store(onServer(name), others);
            QCOMPARE(content(mounted(name)), others);
        }
    }

    void savesGoOnAfterANewConnection() {
        const QString name = u"neu-verbunden.txt"_s;
        store(onServer(name), "alt");
        useLine();
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QCOMPARE(content(mounted(name)), QByteArray("alt"));
        for (const pid_t process : processesWith(hosted(0).domain)) {
            QFile comm(u"/proc/%1/comm"_s.arg(process));
            if (comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == "ssh")
                QCOMPARE(::kill(process, SIGKILL), 0);
        }
        store(onServer(name), "inzwischen");
        QTRY_COMPARE(content(mounted(name)), QByteArray("inzwischen"));
        store(mounted(name), "nachher");
        QCOMPARE(content(onServer(name)), QByteArray("nachher"));
    }
};

QTEST_GUILESS_MAIN(TestStaleness)
#include "tst_staleness.moc"
