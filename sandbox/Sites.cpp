#include "sandbox/Sites.h"

#include "sandbox/HttpAnswers.h"
#include "sandbox/PrivateFile.h"

#include <QFileInfo>
#include <QProcess>

#include <httplib.h>

#include <stdexcept>

namespace sandbox {

namespace {
constexpr size_t workers = 4;

void makeCertificate(const QString& certificate, const QString& key) {
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-nodes"),
                   QStringLiteral("-newkey"), QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                   QStringLiteral("ec_paramgen_curve:P-256"), QStringLiteral("-days"), QStringLiteral("3650"),
                   QStringLiteral("-subj"), QStringLiteral("/CN=sandbox.test"), QStringLiteral("-addext"),
                   QStringLiteral("subjectAltName=DNS:*.sandbox.test,DNS:localhost,IP:127.0.0.1"),
                   QStringLiteral("-keyout"), key, QStringLiteral("-out"), certificate});
    if (!openssl.waitForFinished() || openssl.exitCode() != 0)
        throw std::runtime_error("openssl makes no certificate: " +
                                 openssl.readAllStandardError().toStdString());
}
} // namespace

Sites::Sites(const QString& folder, Faults& faults) : m_folder(folder) {
    const QString key = m_folder + QStringLiteral("/site.key");
    if (!QFileInfo::exists(certificate()) || !QFileInfo::exists(key)) {
        makeFolder(m_folder);
        makeCertificate(certificate(), key);
    }
    m_server = std::make_unique<httplib::SSLServer>(qPrintable(certificate()), qPrintable(key));
    m_server->Get(".*", [this, &faults](const httplib::Request& request, httplib::Response& response) {
        faults.record(recorded(request));
        if (!misbehaves(faults.of(Endpoint::site), request, response, m_stopping))
            send(response, 200, "<h1>Willkommen</h1>", html);
    });
    m_server->new_task_queue = [] { return new httplib::ThreadPool(workers); };
    m_server->set_keep_alive_max_count(1);
    m_port = serve(*m_server, 0, m_thread);
}

Sites::~Sites() {
    m_stopping = true;
    m_server->stop();
    m_thread.join();
}

} // namespace sandbox
