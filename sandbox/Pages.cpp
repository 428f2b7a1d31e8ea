#include "sandbox/Pages.h"

namespace sandbox {

namespace {
QString page(const QString& content) {
    return QStringLiteral(R"(<!DOCTYPE html>
<html lang="de">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Anmelden bei Harvellon (Sandbox)</title>
<style>
* { box-sizing: border-box; margin: 0; }
body { min-height: 100vh; display: flex; align-items: center; justify-content: center; padding: 24px;
  background: #f5f0eb; color: #1a1a1a; font-family: system-ui, sans-serif; }
main { background: #fff; border: 1px solid #e8e0d7; border-radius: 20px; padding: 40px; width: 100%; max-width: 440px; }
h1 { font-size: 22px; margin-bottom: 8px; }
p { font-size: 15px; line-height: 1.5; color: #666; margin-bottom: 24px; }
button { display: block; width: 100%; text-align: left; padding: 14px 16px; margin-bottom: 12px; font: inherit;
  color: inherit; background: #fff; border: 1px solid #ddd4ca; border-radius: 12px; cursor: pointer; }
button:hover { background: #faf7f4; }
button:focus-visible { outline: 2px solid #1a5fb4; outline-offset: 2px; }
strong { display: block; font-size: 15px; }
small { font-size: 13px; color: #666; }
button.cancel { border: 0; text-align: center; margin: 0; color: #666; }
</style>
</head>
<body><main>%1</main></body>
</html>
)")
        .arg(content);
}
} // namespace

QByteArray signInPage(const QList<Identity>& identities, const Parameters& request) {
    QString content =
        QStringLiteral("<h1>Bei Harvellon anmelden</h1><p>Sandbox: Wähle, als wer du dich anmeldest.</p>"
                       "<form method=\"get\" action=\"/oauth/authorize\">");
    for (const char* name : {"client_id", "redirect_uri", "response_type", "scope", "state", "code_challenge",
                             "code_challenge_method"})
        content +=
            QStringLiteral("<input type=\"hidden\" name=\"%1\" value=\"%2\">")
                .arg(QString::fromLatin1(name), request.value(QString::fromLatin1(name)).toHtmlEscaped());
    for (const Identity& identity : identities)
        content +=
            QStringLiteral(
                "<button name=\"identity\" value=\"%1\"><strong>%2</strong> <small>%3</small></button>")
                .arg(identity.key.toHtmlEscaped(), identity.name.toHtmlEscaped(),
                     identity.mayDo.toHtmlEscaped());
    content +=
        QStringLiteral("<button class=\"cancel\" name=\"cancel\" value=\"1\">Abbrechen</button></form>");
    return page(content).toUtf8();
}

QByteArray errorPage(const QString& reason) {
    return page(QStringLiteral("<h1>Anmeldung nicht möglich</h1><p>%1</p>").arg(reason.toHtmlEscaped()))
        .toUtf8();
}

} // namespace sandbox
