#include "System/Tables/OpenFiles.h"

#include <QFile>

#include <fcntl.h>
#include <libproc.h>
#include <unistd.h>

#include <vector>

namespace {
std::vector<pid_t> processesOfThisUser() {
    const int bytes = proc_listpids(PROC_UID_ONLY, getuid(), nullptr, 0);
    std::vector<pid_t> processes(static_cast<size_t>(bytes > 0 ? bytes : 0) / sizeof(pid_t));
    const int filled = proc_listpids(PROC_UID_ONLY, getuid(), processes.data(),
                                     static_cast<int>(processes.size() * sizeof(pid_t)));
    processes.resize(static_cast<size_t>(filled > 0 ? filled : 0) / sizeof(pid_t));
    return processes;
}

bool writesBelow(pid_t process, const QByteArray& prefix) {
    const int bytes = proc_pidinfo(process, PROC_PIDLISTFDS, 0, nullptr, 0);
    if (bytes <= 0)
        return false;
    std::vector<struct proc_fdinfo> descriptors(static_cast<size_t>(bytes) / sizeof(struct proc_fdinfo));
    const int filled = proc_pidinfo(process, PROC_PIDLISTFDS, 0, descriptors.data(),
                                    static_cast<int>(descriptors.size() * sizeof(struct proc_fdinfo)));
    descriptors.resize(static_cast<size_t>(filled > 0 ? filled : 0) / sizeof(struct proc_fdinfo));
    for (const struct proc_fdinfo& descriptor : descriptors) {
        if (descriptor.proc_fdtype != PROX_FDTYPE_VNODE)
            continue;

        struct vnode_fdinfowithpath file {};

        const int size = proc_pidfdinfo(process, descriptor.proc_fd, PROC_PIDFDVNODEPATHINFO, &file,
                                        static_cast<int>(sizeof(file)));
        if (size == static_cast<int>(sizeof(file)) && (file.pfi.fi_openflags & FWRITE) != 0 &&
            QByteArray(file.pvip.vip_path).startsWith(prefix))
            return true;
    }
    return false;
}
} // namespace

bool OpenFiles::anyWrittenBelow(const QString& folder) {
    const QByteArray prefix = QFile::encodeName(folder) + '/';
    for (const pid_t process : processesOfThisUser()) {
        if (writesBelow(process, prefix))
            return true;
    }
    return false;
}
