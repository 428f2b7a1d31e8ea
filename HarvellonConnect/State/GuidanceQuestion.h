#pragma once

#include "Mounting/Setup/SSHFSGuidance.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>

struct ActionContext;
struct Project;

/// For a program that is to end while data is being written to mounts.
Guidance quitGuidance(const QStringList& domains, const std::function<void()>& wait,
                      const std::function<void()>& quit);
/// For a project whose document folder is a link that only the server can follow; `follow` mounts it anew.
Guidance linkGuidance(const Project& project, const std::function<void()>& follow);

/// The guidance alert that is open, if any, and what its buttons do. Main thread.
class GuidanceQuestion : public QObject {
    Q_OBJECT

  public:
    /// `context` outlives this.
    explicit GuidanceQuestion(const ActionContext& context) : m_context(context) {}

    /// Opens the alert; while one is open, further ones are dropped.
    void show(const Guidance& guidance);
    /// Closes the alert with the button that was pressed, counted from 0; -1 for none.
    void answer(int button);

    /// "title", "text" and "buttons" (list of texts); empty when none is open.
    [[nodiscard]] QVariantMap map() const;

  Q_SIGNALS:
    void changed();

  private:
    const ActionContext& m_context;
    std::optional<Guidance> m_guidance;
};
