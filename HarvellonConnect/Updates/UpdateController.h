#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QNetworkAccessManager;

/// Looks for newer versions: after the start, daily, and when the user asks. Main thread.
class UpdateController : public QObject {
    Q_OBJECT

  public:
    /// `feed`: the address of the update feed; `network` outlives the controller.
    UpdateController(const QString& feed, const QString& currentVersion, QNetworkAccessManager& network,
                     QObject* parent = nullptr);
    ~UpdateController() override;

    /// At the user's request: says so when there is nothing newer, and when the feed cannot be read. Bring
    /// the program to the front before: dialogs of a program without a Dock icon open behind other windows.
    void checkForUpdates();

  Q_SIGNALS:
    /// For the user, as a title and a sentence.
    void announced(const QString& title, const QString& text);

  private:
    struct Native;
    std::unique_ptr<Native> m_native;
};
