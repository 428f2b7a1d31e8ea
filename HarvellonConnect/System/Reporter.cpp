#include "System/Reporter.h"

void Reporter::warn(const QString& message) {
    log(message, ActivityLogLevel::warning);
    setLastError(message);
}

void Reporter::accountFailed(const QString& message) {
    log(message, ActivityLogLevel::error);
    setAccountError(message);
}

QCoro::Task<bool> Reporter::run(OperationTexts texts, std::function<QCoro::Task<Ending>()> work) {
    if (texts.publishesFailure)
        setLastError(std::nullopt);
    if (!texts.begin.isEmpty())
        log(texts.begin, ActivityLogLevel::info);
    QString line;
    QString description;
    try {
        const Ending ending = co_await work();
        if (!ending.line.isEmpty())
            log(ending.line, ending.level);
        co_return true;
    } catch (const EndedEarly& failure) {
        line = failure.line();
        description = failure.description();
    } catch (const Failure& failure) {
        description = failure.description();
        line = texts.failure + description;
    } catch (const std::exception& error) {
        description = QString::fromLocal8Bit(error.what());
        line = texts.failure + description;
    }
    if (texts.publishesFailure)
        setLastError(description);
    if (texts.concernsAccount)
        setAccountError(description);
    log(line, ActivityLogLevel::error);
    co_return false;
}
