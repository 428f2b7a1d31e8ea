#pragma once

#include "CommandLine/Listing.h"
#include "Directory/Project.h"
#include "State/AppState.h"
#include "System/Requests/Request.h"

#include <QCoroTask>
#include <QList>
#include <QObject>

#include <functional>

/// Fulfils what the command line asks of the running program. What it does is the same as in the panel, with
/// the same rights, log lines and errors. Main thread.
class CommandService : public QObject {
    Q_OBJECT

  public:
    /// What it needs of the desktop.
    struct Panel {
        std::function<void()> show;
        std::function<void()> toggle;
        /// Selects the project's row, or tells that there is none; the panel is shown by then.
        std::function<void(const QString& domain)> select;
    };

    /// `state` outlives this.
    CommandService(AppState& state, Panel panel, QString versionText);

    /// Yields the answer when the command is done. Throws Failure for what cannot be done.
    QCoro::Task<Answer> answer(Request request);

    /// Shows the panel, with the row of the link's project selected; where the list does not have it, the
    /// panel tells. Waits for the list.
    QCoro::Task<> follow(QString link);

  private:
    QCoro::Task<> untilListIsKnown();
    [[nodiscard]] QList<Project> projects() const;
    QCoro::Task<Project> choose(QString word);
    QCoro::Task<Answer> status(bool json);
    QCoro::Task<Answer> list(bool json);
    QCoro::Task<Answer> connect(Project project);
    QCoro::Task<Answer> disconnect(QString word);
    QCoro::Task<Answer> open(QString word, OpenTarget target);
    QCoro::Task<Answer> search(QString word, QString text);
    QCoro::Task<QString> mounted(Project project);
    QCoro::Task<QString> unmounted(QString domain);
    void throwUnlessOffered(HoverTarget target, const QString& domain) const;
    void throwWithoutList() const;
    [[nodiscard]] ListedProject listed(const Project& project) const;

    AppState& m_state;
    const AppState::Parts m_parts;
    const Panel m_panel;
    const QString m_versionText;
};
