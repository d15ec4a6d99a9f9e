#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

class QSettings;

namespace Platform {

/// The persisted settings of this user. Main thread.
class UserDefaults {
public:
    /// @param settings  where the entries are kept; outlives this object
    explicit UserDefaults(QSettings& settings) : m_settings(settings) {}

    /// The bytes stored under the key, or nothing where there are none.
    std::optional<QByteArray> data(const QString& key) const;

    /// Stores the bytes under the key, replacing any earlier ones, and writes them to the disk before it
    /// returns.
    void setData(const QString& key, const QByteArray& bytes);

private:
    QSettings& m_settings;
};

} // namespace Platform
