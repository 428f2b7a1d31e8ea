#include "bench/EditingSteps.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {
double millisecondsOf(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

[[noreturn]] void fail(const QByteArray& what) {
    throw std::runtime_error(what.toStdString());
}

/// The paths of the folders in `folder`, after a look at every entry.
std::vector<QByteArray> look(const QByteArray& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(folder.constData()), ::closedir);
    if (!stream)
        fail("cannot list " + folder);
    std::vector<QByteArray> entries;
    while (const dirent* const entry = ::readdir(stream.get())) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            entries.push_back(folder + '/' + name);
    }
    std::erase_if(entries, [](const QByteArray& entry) {
        struct stat status {};

        if (::lstat(entry.constData(), &status) != 0)
            fail("cannot look at " + entry);
        return !S_ISDIR(status.st_mode);
    });
    return entries;
}

QByteArray readFile(const QString& path) {
    const QByteArray name = QFile::encodeName(path);

    struct stat status {};

    QFile file(path);
    if (::stat(name.constData(), &status) != 0 || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        fail("cannot open " + name);
    const QByteArray content = file.readAll();
    if (content.size() != status.st_size)
        fail("not the whole of " + name);
    return content;
}

void saveFile(const QString& path, const QByteArray& content) {
    const QByteArray name = QFile::encodeName(path);
    const int file = ::open(name.constData(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    const bool isWritten =
        file >= 0 && ::write(file, content.constData(), size_t(content.size())) == content.size();
    if (file >= 0 && ::close(file) == 0 && isWritten && readFile(path) == content)
        return;
    fail("cannot save " + name);
}

/// The output of a program that succeeds.
QByteArray output(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        fail(program.toUtf8() + ": " + process.readAllStandardError().trimmed());
    return process.readAllStandardOutput();
}

QStringList ripgrep(const QStringList& arguments) {
    return QStringList{QStringLiteral("--no-config"), QStringLiteral("--hidden"), QStringLiteral("--glob"),
                       QStringLiteral("!.git")} +
           arguments;
}
} // namespace

double EditingSteps::crawl() const {
    return millisecondsOf([this] {
        std::vector<QByteArray> waiting{QFile::encodeName(m_root)};
        int seen = 0;
        for (; !waiting.empty(); ++seen) {
            const QByteArray folder = waiting.back();
            waiting.pop_back();
            for (const QByteArray& found : look(folder)) {
                if (!found.endsWith("/.git/objects"))
                    waiting.push_back(found);
            }
        }
        if (seen < m_tree.folders)
            fail("only " + QByteArray::number(seen) + " folders");
    });
}

double EditingSteps::listFiles() const {
    return millisecondsOf([this] {
        if (output(QStringLiteral("rg"), ripgrep({QStringLiteral("--files"), m_root})).count('\n') <
            m_tree.files)
            fail("not all files are listed");
    });
}

double EditingSteps::explore() const {
    return millisecondsOf([this] {
        look(QFile::encodeName(m_root));
        for (int number = 0; number < 9; ++number)
            look(QFile::encodeName(path(m_tree.folder(number))));
    });
}

double EditingSteps::gitStatus() const {
    return millisecondsOf([this] {
        const QByteArray changes =
            output(QStringLiteral("git"),
                   {QStringLiteral("-C"), m_root, QStringLiteral("status"), QStringLiteral("--porcelain")});
        if (changes.contains("datei"))
            fail("git sees changes: " + changes.left(200));
    });
}

double EditingSteps::openFiles() const {
    return millisecondsOf([this] {
        for (int number = 0; number < 25; ++number)
            readFile(path(m_tree.file(number * m_tree.files / 25)));
    });
}

double EditingSteps::saveFiles() const {
    std::vector<std::pair<QString, QByteArray>> edited;
    for (int number = 0; number < 10; ++number) {
        const QString file = path(m_tree.file(number * m_tree.files / 10 + 1));
        edited.emplace_back(file, readFile(file));
    }
    return millisecondsOf([&edited] {
        for (const auto& [file, content] : edited)
            saveFile(file, content);
    });
}

double EditingSteps::search() const {
    return millisecondsOf([this] {
        output(QStringLiteral("rg"), ripgrep({EditingTree::rareWord(), path(m_tree.folder(0))}));
    });
}
