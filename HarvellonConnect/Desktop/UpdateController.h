#pragma once

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>

class QNetworkAccessManager;

/// Looks for newer versions: at start, daily, and when the user asks. Main thread.
class UpdateController : public QObject {
    Q_OBJECT

  public:
    /// `feed`: the address of the update feed; `network` outlives the controller.
    UpdateController(const QString& feed, const QString& currentVersion, QNetworkAccessManager& network,
                     QObject* parent = nullptr);

    /// At the user's request: says so when there is nothing newer, and when the feed cannot be read.
    void checkForUpdates();

  Q_SIGNALS:
    /// For the user, as a title and a sentence.
    void announced(const QString& title, const QString& text);

  private:
    QCoro::Task<> check(bool asked);

    const QUrl m_feed;
    const QString m_currentVersion;
    QNetworkAccessManager& m_network;
    QTimer m_daily;
};
