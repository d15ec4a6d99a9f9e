#include "Tests/Support/FolderContent.h"

#include <QCryptographicHash>
#include <QFile>

#include <filesystem>
#include <system_error>

using Platform::FileURL;

namespace {

QString checksum(const std::filesystem::path& path) {
    QFile file(QFile::decodeName(path.c_str()));
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) {
        return {};
    }
    return QString::fromLatin1(hash.result().toHex());
}

} // namespace

QStringList checksumsIn(const FileURL& folder) {
    QStringList checksums;
    std::error_code ended; // by a folder that cannot be read: what is in it is missing in the list
    for (std::filesystem::recursive_directory_iterator entry(folder.path(), ended), end; entry != end;
         entry.increment(ended)) {
        std::error_code gone;
        if (entry->is_regular_file(gone)) {
            const auto name = entry->path().lexically_relative(folder.path());
            checksums.append(QString::fromStdString(name.native()) + u' ' + checksum(entry->path()));
        }
    }
    checksums.sort();
    return checksums;
}

QStringList moved(
    const QStringList& checksums, const std::vector<std::string>& names, const std::string& subfolder) {
    QStringList after = checksums;
    for (const std::string& name : names) {
        const QString start = QString::fromStdString(name) + u' ';
        const QString newStart = QString::fromStdString(subfolder) + u'/' + start;
        for (QString& line : after) {
            if (line.startsWith(start)) {
                line.replace(0, start.size(), newStart);
            }
        }
    }
    after.sort();
    return after;
}

QStringList withoutFolder(const QStringList& checksums, const std::string& subfolder) {
    const QString start = QString::fromStdString(subfolder) + u'/';
    QStringList before;
    for (const QString& line : checksums) {
        before.append(line.startsWith(start) ? line.sliced(start.size()) : line);
    }
    before.sort();
    return before;
}
