// What an editor, its search and git wait for over a real line, beside a bare sshfs. With --quick: a smaller
// tree, one line.

#include "bench/EditingMounts.h"
#include "bench/EditingSteps.h"
#include "bench/Measured.h"

#include "sandbox/Sandbox.h"
#include "sandbox/ssh/ProjectTrees.h"
#include "sandbox/ssh/SlowLine.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <vector>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::seconds editorOpens = 1s;       // at the earliest
constexpr std::chrono::milliseconds readyWithin = 19s; // the crawl begins within twenty seconds of connecting

/// A step and the one after it in the same connection, if any.
struct Story {
    const char* first;
    double (EditingSteps::*step)() const;
    std::optional<double> wanted; ///< how many times faster than bare
    const char* again = nullptr;
    double (EditingSteps::*nextStep)() const = nullptr;
    std::optional<double> nextWanted = std::nullopt;
    bool whileReading = false; ///< as soon as an editor can have opened, with much still to be read ahead
};

const std::vector<Story>& stories() {
    static const std::vector<Story> all{
        {"first look at ten folders", &EditingSteps::explore, 2, nullptr, nullptr, {}, true},
        {"crawl of all folders", &EditingSteps::crawl, 50},
        {"list of all files", &EditingSteps::listFiles, {}},
        {"git status", &EditingSteps::gitStatus, 5},
        {"search in a tenth of the files",
         &EditingSteps::search,
         {},
         "the same search again",
         &EditingSteps::search,
         1.8},
        {"opening 25 files", &EditingSteps::openFiles, {}, "opening them again", &EditingSteps::openFiles, 2},
        {"saving 10 files", &EditingSteps::saveFiles, {}},
    };
    return all;
}

/// A connection that ends with this object, also when a step has failed.
struct Connection {
    explicit Connection(EditingMount& connected) : mount(connected) { mount.connect(); }

    ~Connection() { mount.disconnect(); }

    Q_DISABLE_COPY_MOVE(Connection)
    EditingMount& mount;
};

/// Both steps of a story, from a new connection.
std::pair<double, double> play(const Story& story, EditingMount& mount, const EditingTree& tree) {
    const Connection connection(mount);
    const EditingSteps steps(mount.root(), tree);
    if (story.whileReading)
        QThread::sleep(editorOpens.count());
    else
        mount.settle(readyWithin);
    const double first = (steps.*story.step)();
    return {first, story.nextStep ? (steps.*story.nextStep)() : 0};
}

/// Plays the story on both and prints how they compare. Yields whether all steps succeeded.
bool compare(const Story& story, EditingMount& bare, EditingMount& own, const EditingTree& tree) {
    try {
        const auto [bareFirst, bareNext] = play(story, bare, tree);
        const auto [ownFirst, ownNext] = play(story, own, tree);
        printRatio(story.first, bareFirst, ownFirst, story.wanted);
        if (story.nextStep)
            printRatio(story.again, bareNext, ownNext, story.nextWanted);
        return true;
    } catch (const std::exception& error) {
        std::printf("  %-34s FAILED: %s\n", story.first, error.what());
        return false;
    }
}

void connectBoth(EditingMount& bare, EditingMount& own) {
    constexpr int runs = 7;
    Measured listing;
    Measured mounting;
    for (int run = 0; run < runs; ++run) { // in turns, so that both meet the same machine
        listing.add(bare.connect());
        bare.disconnect();
        mounting.add(own.connect());
        own.disconnect();
    }
    listing.print("  bare sshfs to its first listing", std::nullopt);
    mounting.print("  connect to mounted", 1.05 * listing.median());
}

double residentMegabytes(qint64 process) {
    QFile file(QStringLiteral("/proc/%1/status").arg(process));
    const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return text.mid(text.indexOf("VmRSS:") + 6).trimmed().split(' ').first().toDouble() / 1024;
}

Project projectOf(const sandbox::Sandbox& platform, int number) {
    const sandbox::HostedProject& hosted = platform.people().at(0).projects.at(number);
    return {hosted.domain, hosted.name, QString::number(hosted.webspaceID),
            sandbox::mountedFolder(platform.treeRoot(), hosted), ProjectType::ssh};
}

/// What sshfs holds after everything in a large project was looked at.
void measureMemory(const HostSystem& host, const Project& project, const EditingTree& tree) {
    tree.makeFiles(project.path);
    OwnMount mount(host, project);
    mount.connect();
    const double took = EditingSteps(mount.root(), tree).crawl();
    const std::string detail = "crawl took " + std::to_string(int(took)) + " ms";
    printFigure("memory of sshfs, 20,000 files", residentMegabytes(mount.process()), "MB", 20, detail);
    mount.disconnect();
}
} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    const bool isQuick = application.arguments().contains(QStringLiteral("--quick"));
    const EditingTree tree = isQuick ? EditingTree{1'000, 130} : EditingTree{};
    const QTemporaryDir folder;
    sandbox::Sandbox platform({folder.filePath(QStringLiteral("platform")), 0, true});
    qputenv("PATH", platform.ssh().binFolder().toUtf8() + ':' + qgetenv("PATH"));
    sandbox::SlowLine line(platform.ssh().port());
    platform.ssh().letClientsUse(line.port());
    const HostSystem host = HostSystem::linuxDesktop(folder.filePath(QStringLiteral("home")));
    measureMemory(host, projectOf(platform, 1), {20'000, 2'592});

    const Project project = projectOf(platform, 0);
    tree.make(project.path);
    BareMount bare(host, project);
    OwnMount own(host, project);
    bool isComplete = true;
    for (const std::chrono::milliseconds delay : isQuick ? std::vector{20ms} : std::vector{4ms, 20ms}) {
        line.setQuality({delay, 0});
        std::printf("%d files in %d folders, %d ms round trip\n", tree.files, tree.folders,
                    int(2 * delay.count()));
        connectBoth(bare, own);
        for (const Story& story : stories()) {
            EditingTree::refreshIndex(project.path);
            isComplete = compare(story, bare, own, tree) && isComplete;
        }
    }
    return isComplete ? EXIT_SUCCESS : EXIT_FAILURE;
}
