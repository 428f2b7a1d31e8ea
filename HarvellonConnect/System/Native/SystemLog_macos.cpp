#include "System/Native/SystemLog.h"

#include "System/Logging.h"

#include <QByteArray>
#include <QHash>
#include <QMutex>

#include <os/log.h>

namespace {
/// One for each category, made at its first line and kept: the system never gives them back. Mutex and table
/// are never destroyed either, because lines come from worker threads and until the very end of the process.
os_log_t logOf(const char* category) {
    static auto& mutex = *new QMutex;
    static auto& logs = *new QHash<QByteArray, os_log_t>;
    const QMutexLocker lock(&mutex);
    os_log_t& log = logs[QByteArray(category)];
    if (log == nullptr)
        log = os_log_create(applicationIdentifier.latin1(), category);
    return log;
}

os_log_type_t typeOf(QtMsgType type) {
    switch (type) {
    case QtDebugMsg:
        return OS_LOG_TYPE_DEBUG;
    case QtInfoMsg:
        return OS_LOG_TYPE_DEFAULT;
    case QtWarningMsg:
    case QtCriticalMsg:
        return OS_LOG_TYPE_ERROR;
    case QtFatalMsg:
        return OS_LOG_TYPE_FAULT;
    }
    return OS_LOG_TYPE_DEFAULT;
}

void write(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    os_log_with_type(logOf(context.category == nullptr ? "default" : context.category), typeOf(type),
                     "%{public}s", message.toUtf8().constData());
}
} // namespace

void installSystemLog() {
    qInstallMessageHandler(write);
}
