#include "SignIn/FormBody.h"

#include <QUrl>

QByteArray formBody(const QList<std::pair<QString, QString>>& fields) {
    QByteArray body;
    for (const auto& [name, value] : fields) {
        if (!body.isEmpty())
            body.append('&');
        body.append(name.toUtf8()).append('=').append(QUrl::toPercentEncoding(value, "!$'()*,/:;?@"));
    }
    return body;
}
