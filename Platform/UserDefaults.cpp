#include "Platform/UserDefaults.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

namespace Platform {

namespace {

QString nameOf(const FileURL& file) {
    return QFile::decodeName(file.path().c_str());
}

/// The entries of a file; none where it is not one of ours.
QJsonObject entriesOf(const FileURL& file) {
    constexpr qint64 mostBytes = qint64{1} << 20;
    QFile content(nameOf(file));
    if (!content.open(QIODevice::ReadOnly) || content.size() > mostBytes) {
        return {};
    }
    return QJsonDocument::fromJson(content.readAll()).object();
}

} // namespace

FileURL UserDefaults::standardFile() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QString file = QDir(folder).filePath(QCoreApplication::applicationName() + "/settings.json");
    return FileURL(std::filesystem::path(QFile::encodeName(file).toStdString()));
}

std::optional<QByteArray> UserDefaults::data(const QString& key) const {
    const QJsonValue value = entriesOf(m_file).value(key);
    if (!value.isString()) {
        return std::nullopt;
    }
    const auto bytes =
        QByteArray::fromBase64Encoding(value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return bytes ? std::optional(*bytes) : std::nullopt;
}

void UserDefaults::setData(const QString& key, const QByteArray& bytes) {
    QJsonObject entries = entriesOf(m_file);
    entries.insert(key, QString::fromLatin1(bytes.toBase64()));
    QDir().mkpath(nameOf(m_file.deletingLastPathComponent()));
    QSaveFile file(nameOf(m_file));
    if (!file.open(QIODevice::WriteOnly)) {
        return;
    }
    file.write(QJsonDocument(entries).toJson());
    if (file.flush()) { // commit() does not look whether that went well, and would replace the file by a part of it
        file.commit();
    }
}

} // namespace Platform
