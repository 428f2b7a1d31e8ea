#include "System/Preferences.h"

#include "System/Logging.h"

namespace {
std::unique_ptr<QSettings> settingsIn(const QString& file) {
    if (!file.isEmpty())
        return std::make_unique<QSettings>(file, QSettings::IniFormat);
    // By name, not by file: on macOS that is the user's defaults of this program's identifier.
    auto settings =
        std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                    QStringLiteral("harvellon.com"), QStringLiteral("HarvellonConnect"));
    settings->setFallbacksEnabled(false);
    return settings;
}
} // namespace

Preferences::Preferences(const QString& file, QVariantMap fixed)
    : m_file(file), m_fixed(std::move(fixed)), m_settings(settingsIn(file)) {}

std::optional<bool> Preferences::boolean(const QString& key) const {
    const QVariant stored = value(key);
    if (stored.typeId() == QMetaType::Bool)
        return stored.toBool();
    // An INI file knows texts only, and writes booleans as these two.
    const QString text = stored.toString();
    if (stored.typeId() == QMetaType::QString &&
        (text == QLatin1String("true") || text == QLatin1String("false")))
        return text == QLatin1String("true");
    return std::nullopt;
}

std::optional<QString> Preferences::text(const QString& key) const {
    const QVariant stored = value(key);
    return stored.typeId() == QMetaType::QString ? std::optional(stored.toString()) : std::nullopt;
}

std::optional<QByteArray> Preferences::data(const QString& key) const {
    const QVariant stored = value(key);
    if (stored.typeId() == QMetaType::QByteArray || stored.typeId() == QMetaType::QString)
        return stored.toByteArray();
    return std::nullopt;
}

bool Preferences::set(const QVariantMap& values) {
    for (auto value = values.begin(); value != values.end(); ++value) {
        if (fixed(value.key()).isValid())
            continue;
        if (value->isValid())
            m_settings->setValue(value.key(), *value);
        else
            m_settings->remove(value.key());
    }
    return write();
}

QString Preferences::file() const {
    return m_settings->fileName();
}

void Preferences::retry() {
    if (m_settings->status() != QSettings::NoError)
        write();
}

bool Preferences::write() {
    // A failure sticks to the object. Another one for the same file shares what is not yet saved.
    if (m_settings->status() != QSettings::NoError)
        m_settings = settingsIn(m_file);
    m_settings->sync();
    if (m_settings->status() == QSettings::NoError)
        return true;
    qCWarning(lcPreferences) << "cannot write" << m_settings->fileName();
    return false;
}
