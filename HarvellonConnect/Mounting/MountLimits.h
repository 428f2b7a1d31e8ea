#pragma once

#include <chrono>
#include <cstddef>

/// How long each step of unmounting may take.
struct UnmountLimits {
    std::chrono::milliseconds command; ///< for one unmount command
    std::chrono::milliseconds silence; ///< a server that sends nothing for this long counts as silent
    std::chrono::milliseconds grace;   ///< for sshfs to end after it was asked to
    bool keepUntilClosed;              ///< whether sshfs lives on until files in use are closed
    std::chrono::milliseconds writers; ///< for writing to end before a command that would cut it off
};

/// How far a warm-up goes.
struct WarmUpLimits {
    int readers = 8; ///< with more, a file that is opened meanwhile opens noticeably later
    std::size_t folders = 2'000;
    std::chrono::seconds time{25};
    std::chrono::milliseconds entryLife{25'000}; ///< as long as sshfs remembers names
};

/// The time limits of the mounter. The defaults are those of the program.
struct MountLimits {
    /// From the start of sshfs until the server has answered.
    std::chrono::milliseconds mount{15'000};
    /// Between two starts of sshfs. A starting ssh needs about 80 ms of a processor, so twenty started at
    /// once would freeze the panel.
    std::chrono::milliseconds startInterval{80};
    /// A gentle unmount first writes cached data, which takes a moment; with a silent server it never ends.
    UnmountLimits unmount{std::chrono::seconds(3), std::chrono::seconds(3), std::chrono::seconds(1), true,
                          std::chrono::seconds(30)};
    /// For the end of the program, which may take five seconds in all.
    UnmountLimits quit{std::chrono::milliseconds(700), std::chrono::seconds(1),
                       std::chrono::milliseconds(300), false, std::chrono::milliseconds(0)};
    /// For the moment before the system sleeps, which waits two seconds.
    UnmountLimits sleep{std::chrono::milliseconds(400), std::chrono::milliseconds(400),
                        std::chrono::milliseconds(200), false, std::chrono::milliseconds(0)};
    /// From the beginning of `unmountAll` until every sshfs that is left is killed.
    std::chrono::milliseconds killAfter{3'000};
    WarmUpLimits warmUp;
};
