#include "sandbox/WebServer.h"

#include "sandbox/Authorization.h"
#include "sandbox/HttpAnswers.h"
#include "sandbox/Pages.h"
#include "sandbox/PrivateFile.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <httplib.h>

#include <stdexcept>

namespace sandbox {

namespace {
using httplib::Request;
using httplib::Response;

constexpr size_t largestRequest = 1024 * 1024;
constexpr size_t workers = 24; // slow answers and the idle connections that browsers keep each hold one

Parameters parametersOf(const Request& request) {
    Parameters parameters;
    for (const auto& [name, value] : request.params)
        parameters.insert(QString::fromStdString(name), QString::fromStdString(value));
    return parameters;
}

} // namespace

WebServer::WebServer(const QList<Identity>& identities, TokenLedger& ledger, Faults& faults, QString treeRoot,
                     const QString& portFile)
    : m_identities(identities), m_ledger(ledger), m_faults(faults), m_treeRoot(std::move(treeRoot)),
      m_server(std::make_unique<httplib::Server>()) {
    route();
    listen(portFile);
}

WebServer::~WebServer() {
    m_stopping = true;
    m_server->stop();
    if (m_thread.joinable())
        m_thread.join();
}

void WebServer::route() {
    const auto to = [this](void (WebServer::*answer)(const Request&, Response&)) {
        return [this, answer](const Request& request, Response& response) {
            m_faults.record(recorded(request));
            (this->*answer)(request, response);
        };
    };
    const auto nothingThere = [this](const Request& request, Response& response) {
        m_faults.record(recorded(request));
        send(response, 404, errorPage(QStringLiteral("Diese Seite gibt es nicht.")), html);
    };
    m_server->Get("/oauth/authorize", to(&WebServer::authorize));
    m_server->Post("/oauth/token", to(&WebServer::token));
    m_server->Get("/api/json/applications", to(&WebServer::directory));
    m_server->Post("/api/json/applications", to(&WebServer::directory));
    m_server->Post("/sandbox/faults",
                   [this](const Request& request, Response& response) { takeFaults(request, response); });
    m_server->Get(".*", nothingThere);
    m_server->Post(".*", nothingThere);
}

void WebServer::listen(const QString& portFile) {
    m_server->new_task_queue = [] { return new httplib::ThreadPool(workers); };
    m_server->set_keep_alive_max_count(1);
    m_server->set_keep_alive_timeout(1); // an idle connection holds up the end for that long
    m_server->set_payload_max_length(largestRequest);
    m_server->set_default_headers({{"Cache-Control", "no-store"}});
    m_port = serve(*m_server, contentOf(portFile).toInt(), m_thread);
    writePrivateFile(portFile, QByteArray::number(m_port));
}

void WebServer::authorize(const Request& request, Response& response) {
    const Parameters parameters = parametersOf(request);
    const QString reason = refusal(parameters);
    if (!reason.isEmpty())
        return send(response, 400, errorPage(reason), html);
    if (parameters.contains(QStringLiteral("cancel")))
        return response.set_redirect(
            callbackAddress(parameters, QStringLiteral("error"), QStringLiteral("access_denied"))
                .toStdString());
    const std::optional<Identity> chosen =
        identityWithKey(m_identities, parameters.value(QStringLiteral("identity")));
    if (!chosen)
        return send(response, 200, signInPage(m_identities, parameters), html);
    const QString code = m_ledger.issueCode(chosen->key, parameters.value(QStringLiteral("redirect_uri")),
                                            parameters.value(QStringLiteral("code_challenge")));
    response.set_redirect(callbackAddress(parameters, QStringLiteral("code"), code).toStdString());
}

void WebServer::token(const Request& request, Response& response) {
    if (misbehaves(m_faults.of(Endpoint::token), request, response, m_stopping))
        return;
    const Parameters form = parametersOf(request);
    const QString grantType = form.value(QStringLiteral("grant_type"));
    std::optional<IssuedTokens> issued;
    if (isKnownClient(form) && grantType == QLatin1String("authorization_code"))
        issued = m_ledger.redeemCode(form.value(QStringLiteral("code")),
                                     form.value(QStringLiteral("redirect_uri")),
                                     form.value(QStringLiteral("code_verifier")));
    else if (isKnownClient(form) && grantType == QLatin1String("refresh_token"))
        issued = m_ledger.refresh(form.value(QStringLiteral("refresh_token")));
    const std::optional<Identity> identity =
        identityWithKey(m_identities, issued ? issued->identity : QString());
    if (!identity)
        return send(response, 400, R"({"error":"invalid_grant"})", json);
    constexpr int lifetime = 3600; // seconds; a promise only, tokens end when a test says so
    const QJsonObject answer{{QStringLiteral("access_token"), issued->accessToken},
                             {QStringLiteral("refresh_token"), issued->refreshToken},
                             {QStringLiteral("token_type"), QStringLiteral("Bearer")},
                             {QStringLiteral("expires_in"), lifetime},
                             {QStringLiteral("id_token"), idToken(*identity)}};
    send(response, 200, QJsonDocument(answer).toJson(QJsonDocument::Compact), json);
}

void WebServer::directory(const Request& request, Response& response) {
    if (misbehaves(m_faults.of(Endpoint::directory), request, response, m_stopping))
        return;
    const QString header = QString::fromStdString(request.get_header_value("Authorization"));
    const QString bearer = QStringLiteral("Bearer ");
    const std::optional<QString> key =
        header.startsWith(bearer) ? m_ledger.identityFor(header.mid(bearer.size())) : std::nullopt;
    const std::optional<Identity> identity = identityWithKey(m_identities, key.value_or(QString()));
    if (!identity)
        return send(response, 401, R"({"error":"invalid_token"})", json);
    send(response, 200, directoryAnswer(*identity, m_treeRoot), json);
}

/// {"token": {…}, "directory": {…}, "site": {…}, "expire_tokens": true, "revoke_all": true}, each of them
/// optional.
void WebServer::takeFaults(const Request& request, Response& response) {
    // A page in a browser can post other types to any address, but not this one.
    if (request.get_header_value("Content-Type") != json)
        return send(response, 415, "{}", json);
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(request.body));
    if (!document.isObject())
        return send(response, 400, "{}", json);
    try {
        const QJsonObject orders = document.object();
        for (auto order = orders.begin(); order != orders.end(); ++order) {
            if (order.key() == QLatin1String("token"))
                m_faults.set(Endpoint::token, Fault::fromJson(order->toObject()));
            else if (order.key() == QLatin1String("directory"))
                m_faults.set(Endpoint::directory, Fault::fromJson(order->toObject()));
            else if (order.key() == QLatin1String("site"))
                m_faults.set(Endpoint::site, Fault::fromJson(order->toObject()));
            else if (order.key() == QLatin1String("expire_tokens") && order->toBool())
                m_ledger.expireAccessTokens();
            else if (order.key() == QLatin1String("revoke_all") && order->toBool())
                m_ledger.revokeAll();
            else
                throw std::invalid_argument("no such order: " + order.key().toStdString());
        }
        send(response, 200, "{}", json);
    } catch (const std::invalid_argument& error) {
        const QJsonObject answer{{QStringLiteral("error"), QString::fromUtf8(error.what())}};
        send(response, 400, QJsonDocument(answer).toJson(QJsonDocument::Compact), json);
    }
}

} // namespace sandbox
