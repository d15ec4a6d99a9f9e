#include "Platform/UserDefaults.h"

#include <QSettings>
#include <QVariant>

namespace Platform {

std::optional<QByteArray> UserDefaults::data(const QString& key) const {
    const QVariant value = m_settings.value(key);
    if (value.typeId() != QMetaType::QByteArray) {
        return std::nullopt;
    }
    return value.toByteArray();
}

void UserDefaults::setData(const QString& key, const QByteArray& bytes) {
    m_settings.setValue(key, bytes);
    m_settings.sync();
}

} // namespace Platform
