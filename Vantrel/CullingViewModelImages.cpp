// Showing a photo at once and sharpening it, and the pass that decodes small pictures ahead.
#include "Vantrel/CullingViewModel.h"
#include "Vantrel/LoadThumbnail.h"

using Platform::FileURL;
using Platform::Image;
using Platform::Task;
using Platform::TaskPriority;

namespace {

/// How long the user rests on a photo before its large decode begins.
constexpr std::chrono::milliseconds upgradeDelay{150};

/// Work for a task: decode that photo at that size.
auto decoding(const FileURL& url, int maxPixelSize) {
    return [url, maxPixelSize](const Task& task) { return loadThumbnail(url, maxPixelSize, task); };
}

} // namespace

// Each task is held by its field or has been cancelled, and the destructor cancels those held: what is delivered is
// delivered to a living view model.

bool CullingViewModel::isCurrent(int index, const FileURL& url) const {
    // The position alone would let a photo of the folder before pass for one of this folder.
    return m_currentIndex == index && currentURL() == url;
}

void CullingViewModel::navigateTo(int index) {
    if (!isPosition(index)) {
        return;
    }
    setCurrentIndex(index);
    cancel(m_currentLoadTask);
    cancel(m_upgradeTask);
    if (const auto large = m_imageCache.read(index)) {
        setCurrentImage(*large);
    } else if (const auto small = m_smallThumbnails.read(index)) {
        setCurrentImage(*small);
    } else {
        loadCurrentImage(index, smallPixelSize, m_smallThumbnails);
    }
    scheduleUpgrade(index);
}

void CullingViewModel::scheduleUpgrade(int index) {
    m_upgradeTask = m_scheduler.sleep(upgradeDelay, [this, index] { upgradeCurrentImage(index); });
}

void CullingViewModel::upgradeCurrentImage(int index) {
    // The list may have become shorter while the upgrade was pending.
    if (m_currentIndex != index || !isPosition(index)) {
        return;
    }
    cancel(m_currentLoadTask);
    loadCurrentImage(index, largePixelSize, m_imageCache);
}

void CullingViewModel::loadCurrentImage(int index, int maxPixelSize, ImageCache& cache) {
    const FileURL url = m_photoItems[index].url();
    const auto deliver = [this, index, url, &cache](const Image& image) {
        if (isCurrent(index, url)) {
            setCurrentImage(image);
            cache.write(index, cacheEntry(image));
        }
    };
    m_currentLoadTask =
        m_scheduler.detached(TaskPriority::UserInitiated, decoding(url, maxPixelSize), deliver);
}

void CullingViewModel::preloadAllSmallThumbnails() {
    cancel(m_preloadAllTask);
    auto urls = std::make_shared<std::vector<FileURL>>();
    urls->reserve(m_photoItems.size());
    for (const PhotoItem& item : m_photoItems) {
        urls->push_back(item.url());
    }
    m_preloadAllTask = Task();
    preloadSmallThumbnails(urls, 0);
}

void CullingViewModel::preloadSmallThumbnails(const SmallPassURLs& urls, int position) {
    while (position < std::ssize(*urls) && m_smallThumbnails.read(position)) {
        ++position;
    }
    if (position == std::ssize(*urls)) {
        return;
    }
    const auto work = decoding((*urls)[position], smallPixelSize);
    const auto deliver = [this, urls, position](const Image& image) {
        if (!image.isNull()) {
            m_smallThumbnails.write(position, image);
        }
        preloadSmallThumbnails(urls, position + 1);
    };
    m_scheduler.detached(TaskPriority::Background, work, deliver, *m_preloadAllTask);
}
