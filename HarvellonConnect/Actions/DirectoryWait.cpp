#include "Actions/DirectoryWait.h"

#include "System/Async.h"

#include <filesystem>

namespace {
constexpr std::chrono::milliseconds betweenProbes{500};

bool canBeListed(const QString& path) {
    std::error_code error;
    const std::filesystem::path folder(path.toStdString());
    if (!std::filesystem::is_directory(folder, error))
        return false;
    const std::filesystem::directory_iterator listing(folder, error);
    return !error;
}
} // namespace

QCoro::Task<bool> waitForDirectory(AskMount ask, QString domain, QString path, std::chrono::seconds budget) {
    const std::function<bool()> probe = [path] { return canBeListed(path); };
    const auto probes = 2 * budget.count();
    for (std::chrono::seconds::rep i = 0; i < probes; ++i) {
        const std::optional<QFuture<bool>> listed = ask(domain, probe);
        if (!listed)
            co_return false;
        const bool answered = co_await Async::finishesWithin(*listed, std::chrono::milliseconds(budget));
        if (!answered)
            co_return false; // the server is silent
        if (listed->result())
            co_return true;
        co_await Async::sleep(betweenProbes);
    }
    co_return false;
}

QCoro::Task<bool> isBrokenLink(AskMount ask, QString domain, QString path, std::chrono::milliseconds limit) {
    const std::function<bool()> question = [path] {
        std::error_code error;
        const std::filesystem::path file(path.toStdString());
        return std::filesystem::is_symlink(file, error) && !std::filesystem::exists(file, error);
    };
    const std::optional<QFuture<bool>> broken = ask(domain, question);
    if (!broken)
        co_return false;
    const bool answered = co_await Async::finishesWithin(*broken, limit);
    co_return answered && broken->result();
}
