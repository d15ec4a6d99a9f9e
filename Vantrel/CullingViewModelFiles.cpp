// What changes the folder on disk: moving marked photos, and deleting RAW files whose photo is gone.
#include "Platform/FileManager.h"
#include "Vantrel/CullingViewModel.h"
#include "Vantrel/NameOrder.h"

#include <QStringList>

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

using Platform::FileURL;
using Platform::Image;
using Platform::Result;
namespace FileManager = Platform::FileManager;

struct CullingViewModel::MoveKind {
    ReviewState state;
    std::string_view subfolder;
    QString folderFailure; ///< before the description, where the subfolder cannot be made
    QString photoFailures; ///< before the lines, where single photos cannot be moved
};

namespace {

const QString deleteQuestion = QStringLiteral("Delete these files?");

QString errorLine(const FileURL& item, const Platform::Error& error) {
    return Platform::displayText(item.lastPathComponent()) + QStringLiteral(": ") +
           error.localizedDescription();
}

bool isRaw(const FileURL& entry) {
    return Platform::isSameExtension(entry.pathExtension(), "arw");
}

/// The RAW files among the entries whose base name none of the photos has, in name order.
std::vector<FileURL> orphansAmong(const std::vector<FileURL>& entries, const std::vector<PhotoItem>& photos) {
    std::unordered_set<std::string> photoBaseNames;
    for (const PhotoItem& photo : photos) {
        photoBaseNames.insert(photo.url().baseName());
    }
    std::vector<FileURL> orphans;
    for (const FileURL& entry : entries) {
        if (isRaw(entry) && !photoBaseNames.contains(entry.baseName())) {
            orphans.push_back(entry);
        }
    }
    return inNameOrder(orphans);
}

QString alertMessage(const std::vector<FileURL>& orphans) {
    if (orphans.empty()) {
        return QStringLiteral("No orphan RAW files found. All .ARW files have a matching JPG.");
    }
    QStringList names;
    for (const FileURL& orphan : orphans) {
        names.append(Platform::displayText(orphan.lastPathComponent()));
    }
    return QStringLiteral("Found ") + QString::number(orphans.size()) +
           QStringLiteral(" RAW file(s) without a matching JPG:\n\n") + names.join(u'\n') +
           QStringLiteral("\n\n") + deleteQuestion;
}

/// Moves the photos of one move into their folder. Where a disk takes the name of a photo for that of another file, as one that
/// ignores case does, that file, which may just have come there, stays; and so does the photo.
class Arrivals {
public:
    explicit Arrivals(const FileURL& folder) : m_folder(folder) {}

    /// Moves the photo there, where it replaces the file of its name.
    Result<void> add(const PhotoItem& photo) {
        const FileURL target = m_folder.appendingPathComponent(photo.filename());
        if (auto isFree = checkName(target); !isFree) {
            return isFree;
        }
        auto moved = FileManager::moveItem(photo.url(), target);
        if (moved) {
            m_names.insert(photo.filename());
            m_spellings.emplace(foldedName(photo.filename()), photo.filename());
        }
        return moved;
    }

    bool contains(const PhotoItem& photo) const { return m_names.contains(photo.filename()); }

private:
    /// Fails where what answers to the name is listed under another.
    Result<void> checkName(const FileURL& target) {
        const auto isTaken = FileManager::itemExists(target);
        if (!isTaken) {
            return isTaken.error();
        }
        if (!*isTaken) {
            return {};
        }
        const std::string name = target.lastPathComponent();
        const auto [first, last] = m_spellings.equal_range(foldedName(name));
        if (!m_listed || first != last) { // what has come since must be listed, too
            const auto entries = FileManager::contentsOfDirectory(m_folder);
            if (!entries) {
                return entries.error();
            }
            m_listed.emplace();
            for (const FileURL& entry : *entries) {
                m_listed->insert(entry.lastPathComponent());
            }
        }
        const bool areAllListed =
            std::all_of(first, last, [&](const auto& arrived) { return m_listed->contains(arrived.second); });
        return areAllListed && m_listed->contains(name) ? Result<void>() : nameError();
    }

    Platform::Error nameError() const {
        return Platform::Error(QStringLiteral("In “%1” its name stands for another file.")
                                   .arg(Platform::displayText(m_folder.lastPathComponent())));
    }

    /// Equal for names that any disk may take for one.
    static QString foldedName(const std::string& name) {
        return Platform::displayText(name).normalized(QString::NormalizationForm_KC).toCaseFolded();
    }

    const FileURL m_folder;
    std::unordered_set<std::string> m_names;                   // of those that have come
    std::unordered_multimap<QString, std::string> m_spellings; // the same, by folded name
    std::optional<std::unordered_set<std::string>> m_listed;   // in the folder when it was last listed
};

} // namespace

void CullingViewModel::moveApproved() {
    movePhotos({ReviewState::approved, "approved", QStringLiteral("Failed to move approved photos: "),
        QStringLiteral("Failed to move some approved photos:\n")});
}

void CullingViewModel::moveRejected() {
    movePhotos({ReviewState::rejected, "rejected", QStringLiteral("Failed to move rejected photos: "),
        QStringLiteral("Failed to move some rejected photos:\n")});
}

void CullingViewModel::movePhotos(const MoveKind& kind) {
    if (m_folderURL.isEmpty()) {
        return;
    }
    const FileURL targetFolder = m_folderURL.appendingPathComponent(kind.subfolder);
    const auto access = accessToFolder();
    if (const auto made = FileManager::createDirectory(targetFolder); !made) {
        setErrorMessage(kind.folderFailure + made.error().localizedDescription());
        return;
    }
    Arrivals arrivals(targetFolder);
    QStringList errorLines;
    for (const PhotoItem& photo : m_photoItems) {
        if (photo.state() != kind.state) {
            continue;
        }
        if (const auto moved = arrivals.add(photo); !moved) {
            errorLines.append(errorLine(photo.url(), moved.error()));
        }
    }
    std::erase_if(m_photoItems, [&](const PhotoItem& photo) { return arrivals.contains(photo); });
    emit photoItemsChanged();
    setUndoStack({});
    m_imageCache.removeAll();
    settleCurrentPhoto();
    if (!errorLines.isEmpty()) {
        setErrorMessage(kind.photoFailures + errorLines.join(u'\n'));
    }
}

void CullingViewModel::settleCurrentPhoto() {
    if (m_photoItems.empty()) {
        setCurrentIndex(0);
        setCurrentImage(Image());
        return;
    }
    setCurrentIndex(std::min(m_currentIndex, photoCount() - 1));
    navigateTo(m_currentIndex);
    preloadAllSmallThumbnails();
}

bool CullingViewModel::rawSyncAlertAsksToDelete() const {
    return m_rawSyncAlertMessage.contains(deleteQuestion);
}

void CullingViewModel::findOrphanRawFiles() {
    if (m_folderURL.isEmpty()) {
        return;
    }
    const auto access = accessToFolder();
    const auto entries = FileManager::contentsOfDirectory(m_folderURL);
    if (!entries) {
        setErrorMessage(QStringLiteral("Failed to scan folder: ") + entries.error().localizedDescription());
        return;
    }
    setOrphanRawURLs(orphansAmong(*entries, m_photoItems));
    setRawSyncAlertMessage(alertMessage(m_orphanRawURLs));
    setShowRawSyncAlert(true);
}

void CullingViewModel::deleteOrphanRawFiles() {
    if (m_folderURL.isEmpty() || m_orphanRawURLs.empty()) {
        return;
    }
    const auto access = accessToFolder();
    QStringList errorLines;
    for (const FileURL& orphan : m_orphanRawURLs) {
        if (const auto removed = FileManager::removeItem(orphan); !removed) {
            errorLines.append(errorLine(orphan, removed.error()));
        }
    }
    setOrphanRawURLs({});
    if (!errorLines.isEmpty()) {
        setErrorMessage(QStringLiteral("Failed to delete some RAW files:\n") + errorLines.join(u'\n'));
    }
}
