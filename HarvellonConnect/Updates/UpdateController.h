#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class Preferences;
class QNetworkAccessManager;

/// Where newer versions are told, and who vouches for it.
struct UpdateSource {
    QString feed;
    QByteArray key; ///< the public key of the feed's signature, in base64; without one no feed is ever read
    QString currentVersion;
    bool isAllowed = true; ///< by the administrator of the machine
};

/// What a user is told where `isAllowed` is false.
inline const QString updatesForbidden =
    QStringLiteral("Die Suche nach Updates ist von der Verwaltung abgeschaltet.");

/// Looks for newer versions: after the start, daily, and when the user asks. Main thread.
class UpdateController : public QObject {
    Q_OBJECT

  public:
    /// `preferences`, which remember the newest feed, and `network` outlive the controller.
    UpdateController(const UpdateSource& source, Preferences& preferences, QNetworkAccessManager& network,
                     QObject* parent = nullptr);
    ~UpdateController() override;

    /// At the user's request: says so when there is nothing newer, and why the feed is not read or used.
    /// Bring the program to the front before: dialogs of a program without a Dock icon open behind other
    /// windows.
    void checkForUpdates();

  Q_SIGNALS:
    /// For the user, as a title and a sentence.
    void announced(const QString& title, const QString& text);

  private:
    struct Native;
    std::unique_ptr<Native> m_native;
};
