#pragma once

#include "System/HostSystem.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

/// A value that must not appear in a report, and what kind of value it is.
using Secret = std::pair<QString, QString>; ///< kind, value

/// What a report is made of.
struct DiagnosisFacts {
    struct Line {
        QDateTime time;
        QString level;
        QString message;
    };

    HostSystem host;
    QList<Secret> secrets;
    QStringList domains; ///< in the order of their numbers
    QStringList warnings;
    QList<std::pair<QString, QString>> versions;
    QList<std::pair<QString, QString>> settings;
    QList<std::pair<QString, QString>> state;
    QList<Line> log;
};

/// The report as a text, without any of the secrets and what looks like one. Reads the mount table. Takes a
/// while for thousands of projects; any thread.
[[nodiscard]] QString diagnosisText(const DiagnosisFacts& facts);
