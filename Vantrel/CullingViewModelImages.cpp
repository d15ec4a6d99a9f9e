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

/// How long the pass waits for a photo before it goes on past it: much longer than any decode takes, or the reading of a photo
/// over a slow network.
constexpr std::chrono::seconds preloadPatience{5};

/// How many photos may be on their way at once because the pass has gone on past them.
constexpr int mostPreloading = 8;

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

/// A pass decodes one photo at a time, in order. One that does not come, as from a disk that does not answer, is left to
/// come late, so that it holds up no other.
struct CullingViewModel::SmallPass {
    std::vector<FileURL> urls;
    int next = 0; ///< the position to go on with
    int underWay = 0;
    bool isReady = true; ///< the photo before it has come, or has taken too long
};

void CullingViewModel::preloadAllSmallThumbnails() {
    cancel(m_preloadAllTask);
    const auto pass = std::make_shared<SmallPass>();
    pass->urls.reserve(m_photoItems.size());
    for (const PhotoItem& item : m_photoItems) {
        pass->urls.push_back(item.url());
    }
    m_preloadAllTask = Task();
    preloadSmallThumbnails(pass);
}

void CullingViewModel::preloadSmallThumbnails(const std::shared_ptr<SmallPass>& pass) {
    if (!pass->isReady || pass->underWay == mostPreloading) {
        return;
    }
    while (pass->next < std::ssize(pass->urls) && m_smallThumbnails.read(pass->next)) {
        ++pass->next;
    }
    if (pass->next == std::ssize(pass->urls)) {
        return;
    }
    const int position = pass->next++;
    ++pass->underWay;
    pass->isReady = false;
    const auto goOn = [this, pass, position] {
        pass->isReady = pass->isReady || pass->next == position + 1;
        preloadSmallThumbnails(pass);
    };
    const auto deliver = [this, pass, position, goOn](const Image& image) {
        if (!image.isNull()) {
            m_smallThumbnails.write(position, image);
        }
        --pass->underWay;
        goOn();
    };
    m_scheduler.detached(
        TaskPriority::Background, decoding(pass->urls[position], smallPixelSize), deliver, *m_preloadAllTask);
    m_scheduler.sleep(preloadPatience, goOn, *m_preloadAllTask);
}
