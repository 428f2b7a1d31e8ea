#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace sandbox {

/// A project as the platform knows it.
struct HostedProject {
    QString domain;
    QString name;
    qint64 webspaceID = 0;
    bool isSshType = false; ///< otherwise one of the platform's own
};

/// A person who may sign in.
struct Identity {
    QString key; ///< short name, used in addresses
    QString sub;
    QString name;
    QString email;
    QString mayDo; ///< shown on the sign-in page
    bool coder = false;
    bool allowDatabaseConnect = false;
    QList<HostedProject> projects;
};

/// The three people. `generated` > 0: each has that many invented projects instead of a dozen.
QList<Identity> identities(int generated = 0);

std::optional<Identity> identityWithKey(const QList<Identity>& all, const QString& key);

/// The directory's answer for a person. `treeRoot`: the folder that holds the project trees.
QByteArray directoryAnswer(const Identity& identity, const QString& treeRoot);

} // namespace sandbox
