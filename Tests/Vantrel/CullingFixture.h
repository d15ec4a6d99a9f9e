#pragma once

#include "Tests/Support/ManualTaskScheduler.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Vantrel/CullingViewModel.h"

#include <QColor>
#include <QSize>

#include <memory>

/// A view model whose inner operations and stores can be reached.
class OpenViewModel : public CullingViewModel {
public:
    using CullingViewModel::CullingViewModel;
    using CullingViewModel::folderBookmark;
    using CullingViewModel::imageCache;
    using CullingViewModel::loadFolder;
    using CullingViewModel::navigateTo;
    using CullingViewModel::orphanRawURLs;
    using CullingViewModel::preloadAllSmallThumbnails;
    using CullingViewModel::restoreBookmark;
    using CullingViewModel::securityScopedResource;
    using CullingViewModel::setCurrentImage;
    using CullingViewModel::setCurrentIndex;
    using CullingViewModel::setErrorMessage;
    using CullingViewModel::setFolderURL;
    using CullingViewModel::setOrphanRawURLs;
    using CullingViewModel::setPhotoItems;
    using CullingViewModel::setRawSyncAlertMessage;
    using CullingViewModel::setUndoStack;
    using CullingViewModel::smallThumbnails;
    using CullingViewModel::UndoEntry;
    using CullingViewModel::undoStack;
    using CullingViewModel::upgradeCurrentImage;
};

/// What a view model needs, with the clock and all background work in the test's hand.
struct CullingFixture {
    /// A new view model, as at the start of the application; one made before is gone.
    OpenViewModel& start(CullingViewModel::FeatureFlags features = {});

    /// Opens the folder by way of the chooser.
    void open(const Platform::FileURL& folder);

    TemporaryFolder home; ///< holds the settings
    TemporaryFolder photos;
    Platform::UserDefaults userDefaults{home.at("settings.json")};
    ManualTaskScheduler scheduler;
    std::optional<Platform::FileURL>
        choice;             ///< what the user chooses in the folder chooser; nothing: cancels
    QString chooserMessage; ///< what the chooser last asked
    std::unique_ptr<OpenViewModel> viewModel;
};

/// A JPEG file of one colour; pixels in stored order.
QByteArray flatPhoto(const QColor& color, QSize size = {300, 200});

/// Writes such photos under these names into the folder, each in a colour of its own: photoColor(0), photoColor(1)...
void writePhotos(
    const TemporaryFolder& folder, const std::vector<std::string>& names, QSize size = {300, 200});
QColor photoColor(int index);

/// Whether the image is the photo of that colour.
bool shows(const Platform::Image& image, const QColor& color);

/// File names of the photos in the list, in order.
std::vector<std::string> names(const CullingViewModel& viewModel);

/// Longer side of the image in pixels; 0 for none.
int longSide(const Platform::Image& image);
