// Opening, scanning and remembering folders.
#include "Platform/AnswerWithin.h"
#include "Platform/Bookmark.h"
#include "Platform/FileManager.h"
#include "Platform/FolderAccess.h"
#include "Vantrel/CullingViewModel.h"
#include "Vantrel/LoadThumbnail.h"
#include "Vantrel/NameOrder.h"

#include <algorithm>
#include <iterator>

using Platform::FileURL;
using Platform::Image;

namespace {

const QString bookmarkKey = QStringLiteral("LastFolderBookmark");

/// By name alone: nothing on the disk is asked, so a folder named like a photo counts as one.
bool isPhoto(const FileURL& entry) {
    const std::string extension = entry.pathExtension();
    return Platform::isSameExtension(extension, "jpg") || Platform::isSameExtension(extension, "jpeg");
}

std::vector<PhotoItem> photosAmong(const std::vector<FileURL>& entries) {
    std::vector<FileURL> photos;
    std::ranges::copy_if(entries, std::back_inserter(photos), isPhoto);
    std::vector<PhotoItem> items;
    items.reserve(photos.size());
    for (const FileURL& photo : inNameOrder(photos)) {
        items.emplace_back(photo, ReviewState::unreviewed);
    }
    return items;
}

} // namespace

std::unique_ptr<CullingViewModel::SecurityScopedResource> CullingViewModel::SecurityScopedResource::create(
    const FileURL& url) {
    if (!Platform::startAccessingSecurityScopedResource(url)) {
        return nullptr;
    }
    return std::unique_ptr<SecurityScopedResource>(new SecurityScopedResource(url));
}

CullingViewModel::SecurityScopedResource::~SecurityScopedResource() {
    Platform::stopAccessingSecurityScopedResource(m_url);
}

std::unique_ptr<CullingViewModel::SecurityScopedResource> CullingViewModel::accessToFolder() const {
    return SecurityScopedResource::create(
        m_securityScopedResource ? m_securityScopedResource->url() : m_folderURL);
}

void CullingViewModel::openFolder() {
    const auto folder =
        m_folderChooser(QStringLiteral("Select a folder containing JPG images to review."), m_folderURL);
    if (folder) {
        loadFolder(*folder);
    }
}

void CullingViewModel::loadFolder(const FileURL& url) {
    m_securityScopedResource.reset();
    m_securityScopedResource = SecurityScopedResource::create(url);
    setFolderURL(url);
    saveBookmark(url);
    const auto entries = Platform::FileManager::contentsOfDirectory(url);
    if (!entries) {
        setErrorMessage(QStringLiteral("Failed to read folder contents."));
        m_securityScopedResource.reset();
        return;
    }
    setPhotoItems(photosAmong(*entries));
    m_imageCache.removeAll();
    m_smallThumbnails.removeAll();
    setUndoStack({});
    setCurrentIndex(0);
    if (m_photoItems.empty()) {
        cancel(m_preloadAllTask); // of the folder before: nothing is to be read from there any more
        setCurrentImage(Image());
        return;
    }
    loadFirstImage();
    preloadAllSmallThumbnails();
}

/// The window waits for the first photo, so that it never shows without; but not for ever.
void CullingViewModel::loadFirstImage() {
    constexpr std::chrono::seconds patience{3};
    const Platform::Task task;
    const auto image = Platform::answerWithin(patience,
        [url = m_photoItems.front().url(), task] { return loadThumbnail(url, largePixelSize, task); });
    if (image) {
        setCurrentImage(*image);
        m_imageCache.write(0, cacheEntry(*image));
        return;
    }
    task.cancel();
    setCurrentImage(Image());
    cancel(m_currentLoadTask);
    loadCurrentImage(0, largePixelSize, m_imageCache);
}

void CullingViewModel::saveBookmark(const FileURL& url) {
    const auto bookmark = Platform::Bookmark::create(url);
    if (!bookmark) {
        return;
    }
    m_folderBookmark = *bookmark;
    m_userDefaults.setData(bookmarkKey, *bookmark);
}

FileURL CullingViewModel::restoreBookmark() {
    const auto bookmark = m_userDefaults.data(bookmarkKey);
    if (!bookmark) {
        return {};
    }
    const auto resolved = Platform::Bookmark::resolve(*bookmark);
    if (!resolved) {
        return {};
    }
    if (resolved->isStale) {
        const auto fresh = Platform::Bookmark::create(resolved->url);
        if (!fresh) {
            return {};
        }
        m_userDefaults.setData(bookmarkKey, *fresh);
    }
    m_folderBookmark = *bookmark; // as it was read; loading the folder makes a fresh one
    return resolved->url;
}
