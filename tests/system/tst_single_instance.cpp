#include "System/SingleInstance.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestSingleInstance : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void theSecondOneAsksTheFirstToShowItself_data() {
        QTest::addColumn<bool>("writable");
        QTest::newRow("lock file") << true;
        QTest::newRow("no lock file can be written") << false;
    }

    void theSecondOneAsksTheFirstToShowItself() {
        QFETCH(const bool, writable);
        const QTemporaryDir home;
        QFile file(home.filePath(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QString folder = writable ? home.filePath(u"private"_s) : file.fileName() + u"/private"_s;
        auto first = std::make_unique<SingleInstance>(folder);
        const QSignalSpy shown(first.get(), &SingleInstance::startedAgain);
        QVERIFY(first->claim());
        SingleInstance second(folder);
        QVERIFY(!second.claim());
        QTRY_COMPARE(shown.size(), 1);
        first.reset();
        QVERIFY(SingleInstance(folder).claim());
    }
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_single_instance.moc"
