#pragma once

#include <QList>
#include <QtGlobal>

#include <optional>

/// The processes of a process group beside its leader. Any thread; one call reads the system's process list.
namespace ProcessGroup {

/// Their process ids. Empty when the group has ended.
QList<qint64> members(qint64 group);

/// What they have exchanged so far, connections to a server included.
struct Traffic {
    quint64 bytes = 0;  ///< read and written; falls when one of them ends
    quint64 unsent = 0; ///< written to connections, but not yet confirmed by the other side

    bool operator==(const Traffic&) const = default;
};

/// Nothing where the system does not tell. On a slow line a program writes in bursts that are seconds apart,
/// because the system buffers what it sends; between them only `unsent` changes.
std::optional<Traffic> traffic(qint64 group);

} // namespace ProcessGroup
