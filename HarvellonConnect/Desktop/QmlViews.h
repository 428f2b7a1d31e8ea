#pragma once

#include <QString>
#include <QUrl>

#include <memory>

class QQmlEngine;

/// The program's own views, and the engine that shows them. Main thread.
class QmlViews {
  public:
    QmlViews();
    ~QmlViews();
    Q_DISABLE_COPY_MOVE(QmlViews)

    /// Made at the first call: the status icon is up sooner without it.
    [[nodiscard]] QQmlEngine& engine();

    /// Where the view of this name lies within the program.
    [[nodiscard]] static QUrl address(const QString& name);

  private:
    std::unique_ptr<QQmlEngine> m_engine;
};
