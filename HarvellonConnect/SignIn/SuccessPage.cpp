#include "SignIn/SuccessPage.h"

namespace {
constexpr const char* page = R"(<!DOCTYPE html>
<html lang="de">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Harvellon Connect</title>
<style>
* { box-sizing: border-box; margin: 0; }
body { min-height: 100vh; display: flex; align-items: center; justify-content: center; padding: 24px;
  background: #f5f0eb; font-family: system-ui, -apple-system, "Segoe UI", Roboto, sans-serif; }
main { background: #fff; border-radius: 20px; padding: 48px 56px; max-width: 420px; text-align: center;
  box-shadow: 0 8px 32px rgba(26, 26, 26, 0.08); }
img { width: 80px; height: 80px; border-radius: 18px; margin-bottom: 24px; }
h1 { font-size: 22px; font-weight: 700; color: #1a1a1a; margin-bottom: 8px; }
p { font-size: 15px; line-height: 1.5; color: #666; margin-bottom: 24px; }
.badge { display: inline-flex; align-items: center; gap: 8px; padding: 8px 16px; border-radius: 999px;
  background: #e8f5e9; color: #2e7d32; font-size: 13px; font-weight: 600; }
footer { margin-top: 24px; font-size: 12px; color: #aaa; }
</style>
</head>
<body>
<main>
<img src="%ICON%" alt="">
<h1>Login erfolgreich</h1>
<p>Du bist jetzt mit Harvellon Connect verbunden.</p>
<div class="badge"><svg width="14" height="14" viewBox="0 0 14 14" aria-hidden="true"><path d="M2.5 7.5l3 3 6-7"
 fill="none" stroke="#2e7d32" stroke-width="2" stroke-linecap="round" stroke-linejoin="round"/></svg>Authentifiziert</div>
<footer>Du kannst diesen Tab jetzt schliessen.</footer>
</main>
</body>
</html>
)";
} // namespace

QByteArray successAnswer(const QByteArray& icon) {
    const QByteArray source = icon.isEmpty() ? QByteArray() : "data:image/png;base64," + icon.toBase64();
    const QByteArray body = QByteArray(page).replace("%ICON%", source);
    return "HTTP/1.1 200 OK\r\n"
           "Content-Type: text/html; charset=utf-8\r\n"
           "Content-Length: " +
           QByteArray::number(body.size()) +
           "\r\n"
           "Connection: close\r\n"
           "\r\n" +
           body;
}
