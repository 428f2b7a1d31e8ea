#pragma once

#include <QString>
#include <QUrl>

#include <memory>

class QQmlEngine;

/// The QML engine that all windows share. Main thread.
class QmlViews {
  public:
    QmlViews();
    ~QmlViews();
    Q_DISABLE_COPY_MOVE(QmlViews)

    /// Created at the first call, so that it does not delay the status icon.
    [[nodiscard]] QQmlEngine& engine();

    /// The address of a view among the program's resources; `name` is its file name without ".qml".
    [[nodiscard]] static QUrl address(const QString& name);

  private:
    std::unique_ptr<QQmlEngine> m_engine;
};
