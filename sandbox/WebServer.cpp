#include "sandbox/WebServer.h"

#include "sandbox/Authorization.h"
#include "sandbox/Pages.h"
#include "sandbox/PrivateFile.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <httplib.h>

#include <fcntl.h>
#include <stdexcept>

namespace sandbox {

namespace {
using httplib::Request;
using httplib::Response;

constexpr const char* loopback = "127.0.0.1";
constexpr const char* html = "text/html; charset=utf-8";
constexpr const char* json = "application/json";
constexpr size_t largestRequest = 1024 * 1024;
constexpr size_t workers = 24; // slow answers and the idle connections that browsers keep each hold one

Parameters parametersOf(const Request& request) {
    Parameters parameters;
    for (const auto& [name, value] : request.params)
        parameters.insert(QString::fromStdString(name), QString::fromStdString(value));
    return parameters;
}

RecordedRequest recorded(const Request& request) {
    RecordedRequest record{QByteArray::fromStdString(request.method),
                           QByteArray::fromStdString(request.path),
                           {},
                           QByteArray::fromStdString(request.body)};
    for (const auto& [name, value] : request.headers)
        record.headers.insert(QByteArray::fromStdString(name).toLower(), QByteArray::fromStdString(value));
    return record;
}

void send(Response& response, int status, const QByteArray& body, const char* type) {
    response.status = status;
    if (body.isEmpty())
        return response.set_content(std::string(), type);
    // Not as content: the library would compress it for whoever takes that, for seconds when it is long.
    response.set_content_provider(static_cast<size_t>(body.size()), type,
                                  [body](size_t offset, size_t length, httplib::DataSink& sink) {
                                      return sink.write(body.constData() + offset, length);
                                  });
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
    m_server->set_socket_options([](socket_t socket) {
        // Not the library's SO_REUSEPORT, which lets two servers have one port. And no child process may keep
        // it.
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
        ::fcntl(socket, F_SETFD, FD_CLOEXEC);
    });

    const int former = contentOf(portFile).toInt();
    if (former > 0 && m_server->bind_to_port(loopback, former))
        m_port = former;
    else
        m_port = m_server->bind_to_any_port(loopback);
    if (m_port <= 0)
        throw std::runtime_error("no port for the web server");
    writePrivateFile(portFile, QByteArray::number(m_port));
    m_thread = std::thread([this] { m_server->listen_after_bind(); });
    while (!m_server->is_running())
        std::this_thread::yield();
}

/// Plays the endpoint's fault; true when that was the whole answer.
bool WebServer::misbehaves(Endpoint endpoint, const Request& request, Response& response) {
    constexpr std::chrono::milliseconds step{20};
    constexpr int methodNotAllowed = 405;
    const Fault fault = m_faults.of(endpoint);
    for (std::chrono::milliseconds waited{0}; waited < fault.delay && !m_stopping; waited += step)
        std::this_thread::sleep_for(std::min(step, fault.delay - waited));
    if (fault.refusePost && request.method == "POST") {
        send(response, methodNotAllowed, "{}", json);
        return true;
    }
    if (fault.status == 0 && fault.body.isEmpty())
        return false;
    send(response, fault.status == 0 ? 200 : fault.status, fault.body, fault.contentType.constData());
    if (!fault.location.isEmpty())
        response.set_header("Location", fault.location.toStdString());
    return true;
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
    if (misbehaves(Endpoint::token, request, response))
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
    if (misbehaves(Endpoint::directory, request, response))
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

/// {"token": {…}, "directory": {…}, "expire_tokens": true, "revoke_all": true}, each of them optional.
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
