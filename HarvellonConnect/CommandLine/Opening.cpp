#include "CommandLine/Opening.h"

#include <QStringList>

#include <algorithm>

Opening openingOf(OpenTarget target) {
    switch (target) {
    case OpenTarget::editor:
        break;
    case OpenTarget::files:
        return {.target = HoverTarget::finder, .needsMount = true};
    case OpenTarget::site:
        return {.target = HoverTarget::safari};
    case OpenTarget::admin:
        return {.target = HoverTarget::safari, .alternative = true};
    case OpenTarget::shell:
        return {.target = HoverTarget::ssh};
    case OpenTarget::database:
        return {.target = HoverTarget::database};
    }
    return {.target = HoverTarget::vscode, .needsMount = true};
}

Answer outcomeSince(const ActivityLog& log, const QUuid& last) {
    const QList<ActivityLogEntry>& entries = log.entries();
    const auto begin = std::find_if(entries.rbegin(), entries.rend(), [&](const ActivityLogEntry& entry) {
                           return entry.id == last;
                       }).base();
    Answer answer;
    QStringList warnings;
    for (auto entry = begin; entry != entries.end(); ++entry) {
        const bool bad = entry->level == ActivityLogLevel::warning || entry->level == ActivityLogLevel::error;
        answer.exitStatus = bad ? ExitStatus::failed : ExitStatus::done;
        if (bad)
            warnings.append(entry->message);
    }
    answer.error = warnings.join(QLatin1Char('\n'));
    return answer;
}
