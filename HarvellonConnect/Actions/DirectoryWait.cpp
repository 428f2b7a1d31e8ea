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

QCoro::Task<bool> waitForDirectory(QString path, std::chrono::seconds budget) {
    const std::function<bool()> probe = [path] { return canBeListed(path); };
    const auto probes = 2 * budget.count();
    for (std::chrono::seconds::rep i = 0; i < probes; ++i) {
        const std::optional<bool> listed = co_await Async::onWorker(probe, budget);
        if (!listed)
            co_return false; // the server is silent: a further question would only hang beside this one
        if (*listed)
            co_return true;
        co_await Async::sleep(betweenProbes);
    }
    co_return false;
}
