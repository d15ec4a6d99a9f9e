#include "Vantrel/CullingViewModel.h"

#include <utility>

using Platform::FileURL;
using Platform::Image;

CullingViewModel::CullingViewModel(const Surroundings& surroundings, FeatureFlags features)
    : m_scheduler(surroundings.scheduler),
      m_userDefaults(surroundings.userDefaults),
      m_folderChooser(surroundings.folderChooser),
      m_features(features) {
    connect(this, &CullingViewModel::currentIndexChanged, this, &CullingViewModel::currentPhotoChanged);
    connect(this, &CullingViewModel::photoItemsChanged, this, &CullingViewModel::currentPhotoChanged);
    if (const FileURL lastFolder = restoreBookmark(); !lastFolder.isEmpty()) {
        loadFolder(lastFolder);
    }
}

CullingViewModel::~CullingViewModel() {
    cancel(m_currentLoadTask);
    cancel(m_upgradeTask);
    cancel(m_preloadAllTask);
}

FileURL CullingViewModel::currentURL() const {
    return isPosition(m_currentIndex) ? m_photoItems[m_currentIndex].url() : FileURL();
}

std::string CullingViewModel::currentPhotoName() const {
    return isPosition(m_currentIndex) ? m_photoItems[m_currentIndex].filename() : std::string();
}

ReviewState CullingViewModel::currentState() const {
    return isPosition(m_currentIndex) ? m_photoItems[m_currentIndex].state() : ReviewState::unreviewed;
}

QString CullingViewModel::currentPhotoDescription() const {
    if (!isPosition(m_currentIndex)) {
        return {};
    }
    const std::string_view state = rawValue(currentState());
    return QStringLiteral("photo %1 of %2, %3, %4")
        .arg(m_currentIndex + 1)
        .arg(photoCount())
        .arg(currentPhotoTitle(), QLatin1String(state.data(), static_cast<qsizetype>(state.size())));
}

template <typename Value>
void CullingViewModel::assign(Value& field, const Value& value, void (CullingViewModel::*changed)()) {
    if (field == value) {
        return;
    }
    field = value;
    emit(this->*changed)();
}

void CullingViewModel::setCurrentImage(const Image& image) {
    assign(m_currentImage, image, &CullingViewModel::currentImageChanged);
}

void CullingViewModel::setCurrentIndex(int index) {
    assign(m_currentIndex, index, &CullingViewModel::currentIndexChanged);
}

void CullingViewModel::setPhotoItems(std::vector<PhotoItem> items) {
    m_photoItems = std::move(items);
    emit photoItemsChanged();
}

void CullingViewModel::setState(int index, ReviewState state) {
    m_photoItems[index].setState(state);
    emit photoItemsChanged();
}

void CullingViewModel::setFolderURL(const FileURL& url) {
    assign(m_folderURL, url, &CullingViewModel::folderURLChanged);
}

void CullingViewModel::setErrorMessage(const std::optional<QString>& message) {
    assign(m_errorMessage, message, &CullingViewModel::errorMessageChanged);
}

void CullingViewModel::setShowRawSyncAlert(bool show) {
    assign(m_showRawSyncAlert, show, &CullingViewModel::showRawSyncAlertChanged);
}

void CullingViewModel::setRawSyncAlertMessage(const QString& message) {
    assign(m_rawSyncAlertMessage, message, &CullingViewModel::rawSyncAlertMessageChanged);
}

void CullingViewModel::setKeepZoom(bool keepZoom) {
    assign(m_keepZoom, keepZoom, &CullingViewModel::keepZoomChanged);
}

void CullingViewModel::setOrphanRawURLs(const std::vector<FileURL>& urls) {
    assign(m_orphanRawURLs, urls, &CullingViewModel::orphanRawURLsChanged);
}

void CullingViewModel::setUndoStack(std::vector<UndoEntry> entries) {
    m_undoStack = std::move(entries);
    emit undoStackChanged();
}
