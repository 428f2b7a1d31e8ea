#pragma once

#include "Directory/ApplicationsResponse.h"
#include "System/Failure.h"

#include <QCoroTask>
#include <QString>

class QNetworkAccessManager;
class QUrl;

/// Why the directory did not answer as it should. The description is the sentence shown to the user.
class ProjectAPIError : public Failure {
  public:
    enum class Case { badResponse, badURL, missingToken, unauthorized, decodeFailed };

    explicit ProjectAPIError(Case error, int statusCode = 0) : m_case(error), m_statusCode(statusCode) {}

    [[nodiscard]] Case error() const { return m_case; }

    [[nodiscard]] int statusCode() const { return m_statusCode; } ///< of badResponse

    [[nodiscard]] QString description() const override;

  private:
    Case m_case;
    int m_statusCode;
};

/// Fetches the signed-in user's profile and projects from the directory. Keeps nothing between calls; calls
/// may overlap. Main thread.
class ProjectAPI {
  public:
    /// `endpoint`: the absolute address of the directory; checked at each call. `network` must outlive this.
    ProjectAPI(QString endpoint, QNetworkAccessManager& network);

    /// Asks with POST, and once more with GET where the server refuses the method. The answer is decoded on a
    /// worker thread. Throws ProjectAPIError, or NetworkError when no answer came (no connection, 15
    /// seconds).
    [[nodiscard]] QCoro::Task<ApplicationsResponse> fetchApplications(QString token);

  private:
    QCoro::Task<ApplicationsResponse> request(QUrl url, QString token, QByteArray method);

    QString m_endpoint;
    QNetworkAccessManager& m_network;
};
