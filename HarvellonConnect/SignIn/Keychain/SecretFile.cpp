#include "SignIn/Keychain/SecretFile.h"

#include "System/AtomicFile.h"
#include "System/Logging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

std::optional<QJsonObject> read(const QString& path) {
    QFile file(path);
    if (!file.exists())
        return QJsonObject();
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray content = file.readAll();
    if (content.isEmpty())
        return QJsonObject();
    const QJsonDocument document = QJsonDocument::fromJson(content);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

bool write(const QString& path, const QJsonObject& items) {
    const QString folder = QFileInfo(path).path();
    if (!QDir().mkpath(folder))
        return false;
    // Where the file system knows no unnamed files, a new one can be opened by others at first.
    QFile::setPermissions(folder, ownerOnly | QFile::ExeOwner);
    return writeAtomically(path, QJsonDocument(items).toJson(), ownerOnly);
}

QString nameOf(const QString& service, const QString& account) {
    return service + QLatin1Char('/') + account;
}
} // namespace

bool SecretFile::save(const QByteArray& data, const QString& service, const QString& account) {
    std::optional<QJsonObject> items = read(m_path);
    if (!items) {
        // Keep an unreadable file under another name, so that it can still be repaired by hand.
        qCWarning(lcKeychain) << "unreadable, set aside:" << m_path;
        QFile::remove(m_path + QStringLiteral(".damaged"));
        QFile::rename(m_path, m_path + QStringLiteral(".damaged"));
        items = QJsonObject();
    }
    items->insert(nameOf(service, account), QString::fromLatin1(data.toBase64()));
    return write(m_path, *items);
}

std::optional<QByteArray> SecretFile::load(const QString& service, const QString& account) const {
    const QJsonValue value = read(m_path).value_or(QJsonObject()).value(nameOf(service, account));
    return value.isString() ? std::optional(QByteArray::fromBase64(value.toString().toLatin1()))
                            : std::nullopt;
}

bool SecretFile::remove(const QString& service, const QString& account) {
    std::optional<QJsonObject> items = read(m_path);
    if (!items)
        return false;
    if (!items->contains(nameOf(service, account)))
        return true;
    items->remove(nameOf(service, account));
    return items->isEmpty() ? removeAll() : write(m_path, *items);
}

QList<SecretFile::Item> SecretFile::items() const {
    QList<Item> list;
    const QJsonObject items = read(m_path).value_or(QJsonObject());
    for (auto item = items.begin(); item != items.end(); ++item) {
        const QString name = item.key();
        list.append({name.section(QLatin1Char('/'), 0, 0), name.section(QLatin1Char('/'), 1),
                     QByteArray::fromBase64(item.value().toString().toLatin1())});
    }
    return list;
}

bool SecretFile::removeAll() {
    return QFile::remove(m_path) || QFile::resize(m_path, 0); // in a folder that has become read-only
}
