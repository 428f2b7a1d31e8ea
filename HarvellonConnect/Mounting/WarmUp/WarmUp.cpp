#include "Mounting/WarmUp/WarmUp.h"

#include "Mounting/WarmUp/FolderCrawl.h"

#include <QFile>
#include <QThreadPool>

namespace {
constexpr int mostReaders = 16; // of all mounts together; further warm-ups wait for their turn

/// Never destroyed, because waiting for a thread that hangs on a dead mount would keep the program from
/// ending.
QThreadPool& readers() {
    static auto* const pool = [] {
        auto* created = new QThreadPool;
        created->setMaxThreadCount(mostReaders);
        created->setThreadPriority(QThread::LowPriority);
        return created;
    }();
    return *pool;
}
} // namespace

WarmUp::WarmUp(QString mountPoint, WarmUpLimits limits)
    : m_mountPoint(std::move(mountPoint)), m_limits(limits) {}

WarmUp::~WarmUp() {
    cancel();
}

void WarmUp::start() {
    if (m_crawl && !m_crawl->isOver())
        return;
    if (m_crawl && !m_crawl->wasStopped() && !m_started.hasExpired(m_limits.entryLife.count()))
        return;
    m_started.start();
    m_crawl = std::make_shared<FolderCrawl>(QFile::encodeName(m_mountPoint), m_limits);
    for (int i = 0; i < m_limits.readers; ++i)
        readers().start([crawl = m_crawl] { crawl->read(); });
}

QFuture<void> WarmUp::cancel() {
    if (!m_crawl)
        return QtFuture::makeReadyFuture();
    m_crawl->stop();
    return m_crawl->end();
}
