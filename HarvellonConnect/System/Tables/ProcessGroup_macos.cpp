#include "System/Tables/ProcessGroup.h"

#include <libproc.h>

#include <vector>

QList<qint64> ProcessGroup::members(qint64 group) {
    QList<qint64> found;
    const int bytes = proc_listpids(PROC_PGRP_ONLY, static_cast<uint32_t>(group), nullptr, 0);
    if (bytes <= 0)
        return found;
    std::vector<pid_t> processes(static_cast<size_t>(bytes) / sizeof(pid_t) +
                                 8); // processes may start between the two calls
    const int filled = proc_listpids(PROC_PGRP_ONLY, static_cast<uint32_t>(group), processes.data(),
                                     static_cast<int>(processes.size() * sizeof(pid_t)));
    for (size_t i = 0; i < static_cast<size_t>(filled < 0 ? 0 : filled) / sizeof(pid_t); ++i) {
        if (processes[i] > 0 && processes[i] != group)
            found.append(processes[i]);
    }
    return found;
}

std::optional<ProcessGroup::Traffic> ProcessGroup::traffic(qint64 /*group*/) {
    return std::nullopt; // macOS counts a process's disk accesses, but not its network traffic
}
