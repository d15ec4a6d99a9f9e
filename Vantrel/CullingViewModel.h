#pragma once

#include "Platform/FileURL.h"
#include "Platform/FolderChooser.h"
#include "Platform/Image.h"
#include "Platform/Task.h"
#include "Platform/UserDefaults.h"
#include "Vantrel/LRUCache.h"
#include "Vantrel/PhotoItem.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <qqmlregistration.h>

#include <memory>
#include <optional>
#include <vector>

/// The state of the culling work and all that can be done with it: the photos of the open folder, their marks, which
/// one is shown, the pictures decoded of them, and the folder on disk.
///
/// Main thread only. Every stored property notifies when it changes: an assignment of an equal value is silent
/// (images are compared by identity); the list of photos and the undo history notify with every assignment.
/// No operation lets a failure escape: what the user must know becomes the errorMessage.
class CullingViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("the application makes the one view model")

    Q_PROPERTY(Platform::Image currentImage READ currentImage NOTIFY currentImageChanged FINAL)
    Q_PROPERTY(bool hasCurrentImage READ hasCurrentImage NOTIFY currentImageChanged FINAL)
    Q_PROPERTY(int currentIndex READ currentIndex NOTIFY currentIndexChanged FINAL)
    Q_PROPERTY(int photoCount READ photoCount NOTIFY photoItemsChanged FINAL)
    Q_PROPERTY(bool hasFolder READ hasFolder NOTIFY folderURLChanged FINAL)
    Q_PROPERTY(QString folderName READ folderName NOTIFY folderURLChanged FINAL)
    Q_PROPERTY(bool hasErrorMessage READ hasErrorMessage NOTIFY errorMessageChanged FINAL)
    Q_PROPERTY(QString errorText READ errorText NOTIFY errorMessageChanged FINAL)
    Q_PROPERTY(bool showRawSyncAlert READ showRawSyncAlert WRITE setShowRawSyncAlert NOTIFY
            showRawSyncAlertChanged FINAL)
    Q_PROPERTY(QString rawSyncAlertMessage READ rawSyncAlertMessage NOTIFY rawSyncAlertMessageChanged FINAL)
    Q_PROPERTY(
        bool rawSyncAlertAsksToDelete READ rawSyncAlertAsksToDelete NOTIFY rawSyncAlertMessageChanged FINAL)
    Q_PROPERTY(bool keepZoom READ keepZoom WRITE setKeepZoom NOTIFY keepZoomChanged FINAL)
    Q_PROPERTY(bool isLockZoomFeatureEnabled READ isLockZoomFeatureEnabled CONSTANT FINAL)
    Q_PROPERTY(bool isSyncRawFeatureEnabled READ isSyncRawFeatureEnabled CONSTANT FINAL)
    Q_PROPERTY(Platform::FileURL currentURL READ currentURL NOTIFY currentPhotoChanged FINAL)
    Q_PROPERTY(QString currentPhotoTitle READ currentPhotoTitle NOTIFY currentPhotoChanged FINAL)
    Q_PROPERTY(bool isCurrentApproved READ isCurrentApproved NOTIFY currentPhotoChanged FINAL)
    Q_PROPERTY(bool isCurrentRejected READ isCurrentRejected NOTIFY currentPhotoChanged FINAL)
    Q_PROPERTY(int approvedCount READ approvedCount NOTIFY photoItemsChanged FINAL)
    Q_PROPERTY(int rejectedCount READ rejectedCount NOTIFY photoItemsChanged FINAL)
    Q_PROPERTY(QString currentPhotoDescription READ currentPhotoDescription NOTIFY currentPhotoChanged FINAL)
    Q_PROPERTY(bool canMoveApproved READ canMoveApproved NOTIFY photoItemsChanged FINAL)
    Q_PROPERTY(bool canMoveRejected READ canMoveRejected NOTIFY photoItemsChanged FINAL)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY undoStackChanged FINAL)
    Q_PROPERTY(bool canSyncRaw READ canSyncRaw NOTIFY folderURLChanged FINAL)

public:
    /// What the view model works with; the references outlive it.
    struct Surroundings {
        Platform::TaskScheduler& scheduler;
        Platform::UserDefaults& userDefaults;
        Platform::FolderChooser folderChooser;
    };

    /// Features that are complete but not offered yet.
    struct FeatureFlags {
        bool isLockZoomFeatureEnabled = false;
        bool isSyncRawFeatureEnabled = false;
    };

    /// Reopens the folder of the last session where it is still to be found, which decodes its first photo; starts
    /// empty otherwise.
    explicit CullingViewModel(const Surroundings& surroundings)
        : CullingViewModel(surroundings, FeatureFlags{}) {}
    CullingViewModel(const Surroundings& surroundings, FeatureFlags features);

    /// Cancels its background work, so that no result is delivered to it any more.
    ~CullingViewModel() override;

    /// The picture of the current photo, replaced by better ones as they arrive; none before the first arrives and
    /// for a photo that cannot be decoded.
    const Platform::Image& currentImage() const { return m_currentImage; }
    bool hasCurrentImage() const { return !m_currentImage.isNull(); }
    /// Position of the shown photo among the photoItems; 0 without photos.
    int currentIndex() const { return m_currentIndex; }
    /// The photos of the open folder in display order.
    const std::vector<PhotoItem>& photoItems() const { return m_photoItems; }
    int photoCount() const { return static_cast<int>(m_photoItems.size()); }
    /// The open folder; empty where none is open.
    const Platform::FileURL& folderURL() const { return m_folderURL; }
    bool hasFolder() const { return !m_folderURL.isEmpty(); }
    /// Last path component of the folder, for showing.
    QString folderName() const { return Platform::displayText(m_folderURL.lastPathComponent()); }

    /// The last error to show; nothing where there is none.
    const std::optional<QString>& errorMessage() const { return m_errorMessage; }
    bool hasErrorMessage() const { return m_errorMessage.has_value(); }
    QString errorText() const { return m_errorMessage.value_or(QString()); }
    Q_INVOKABLE void clearErrorMessage() { setErrorMessage(std::nullopt); }

    bool showRawSyncAlert() const { return m_showRawSyncAlert; }
    void setShowRawSyncAlert(bool show);
    const QString& rawSyncAlertMessage() const { return m_rawSyncAlertMessage; }
    /// Whether the alert's message asks for a decision. The message itself decides it.
    bool rawSyncAlertAsksToDelete() const;

    /// The user's choice to keep zoom and position from photo to photo; without effect while its feature is off.
    bool keepZoom() const { return m_keepZoom; }
    void setKeepZoom(bool keepZoom);
    Q_INVOKABLE void toggleKeepZoom() { setKeepZoom(!m_keepZoom); }
    bool isLockZoomFeatureEnabled() const { return m_features.isLockZoomFeatureEnabled; }
    bool isSyncRawFeatureEnabled() const { return m_features.isSyncRawFeatureEnabled; }

    // The current photo; the values for none where the position is out of range.
    Platform::FileURL currentURL() const; ///< or empty
    std::string currentPhotoName() const; ///< file name in bytes, or ""
    QString currentPhotoTitle() const { return Platform::displayText(currentPhotoName()); }
    /// What a screen reader says of it: "photo 3 of 120, IMG_0003.JPG, approved"; "" where there is none.
    QString currentPhotoDescription() const;
    ReviewState currentState() const; ///< or unreviewed
    bool isCurrentApproved() const { return currentState() == ReviewState::approved; }
    bool isCurrentRejected() const { return currentState() == ReviewState::rejected; }

    // Folder.

    /// Asks for a folder and makes it the open one; cancelling changes nothing.
    Q_INVOKABLE void openFolder();

    // Review. Each does nothing where there is no photo to do it to.

    Q_INVOKABLE void nextPhoto();      ///< from the last to the first
    Q_INVOKABLE void previousPhoto();  ///< from the first to the last
    Q_INVOKABLE void cycleState();     ///< rejects the current photo, or takes its rejection back
    Q_INVOKABLE void toggleApproved(); ///< approves the current photo, or takes its approval back
    Q_INVOKABLE void undo();           ///< takes back the newest mark and goes to its photo
    bool canUndo() const { return !m_undoStack.empty(); }
    int approvedCount() const;
    int rejectedCount() const;

    // Files.

    bool canMoveApproved() const { return approvedCount() > 0; }
    /// Moves the approved photos into the subfolder "approved" of the open folder, where they replace files of the
    /// same name, and out of the list. A photo that cannot be moved stays, and the errorMessage says why.
    Q_INVOKABLE void moveApproved();
    bool canMoveRejected() const { return rejectedCount() > 0; }
    /// The same for the rejected photos and the subfolder "rejected".
    Q_INVOKABLE void moveRejected();

    bool canSyncRaw() const { return hasFolder() && m_features.isSyncRawFeatureEnabled; }
    /// Finds the RAW files in the open folder whose photo is not in the list, and raises the alert about them.
    Q_INVOKABLE void findOrphanRawFiles();
    /// Deletes, for good, the files that the last search found.
    Q_INVOKABLE void deleteOrphanRawFiles();

signals:
    void currentImageChanged();
    void currentIndexChanged();
    void photoItemsChanged();
    void folderURLChanged();
    void errorMessageChanged();
    void showRawSyncAlertChanged();
    void rawSyncAlertMessageChanged();
    void keepZoomChanged();
    void orphanRawURLsChanged();
    void undoStackChanged();
    void
    currentPhotoChanged(); ///< the position or the list changed, so another photo or state may be current

protected:
    /// Access to a folder, held from creation to release.
    class SecurityScopedResource {
    public:
        /// Nothing where access is not granted.
        static std::unique_ptr<SecurityScopedResource> create(const Platform::FileURL& url);
        ~SecurityScopedResource();
        SecurityScopedResource(const SecurityScopedResource&) = delete;
        SecurityScopedResource& operator=(const SecurityScopedResource&) = delete;

        const Platform::FileURL& url() const { return m_url; }

    private:
        explicit SecurityScopedResource(const Platform::FileURL& url) : m_url(url) {}

        const Platform::FileURL m_url;
    };

    /// One mark: where it was made, and what the photo there was before.
    struct UndoEntry {
        int index;
        ReviewState previousState;
    };

    using ImageCache = LRUCache<int, Platform::Image>;

    // Folder: CullingViewModelFolder.cpp
    void loadFolder(const Platform::FileURL& url);
    void loadFirstImage();
    void saveBookmark(const Platform::FileURL& url);
    Platform::FileURL restoreBookmark();
    std::unique_ptr<SecurityScopedResource> accessToFolder() const;

    // Images: CullingViewModelImages.cpp
    void navigateTo(int index);
    void upgradeCurrentImage(int index);
    void preloadAllSmallThumbnails();

    // Assignments that notify.
    void setCurrentImage(const Platform::Image& image);
    void setCurrentIndex(int index);
    void setPhotoItems(std::vector<PhotoItem> items);
    void setState(int index, ReviewState state);
    void setFolderURL(const Platform::FileURL& url);
    void setErrorMessage(const std::optional<QString>& message);
    void setRawSyncAlertMessage(const QString& message);
    void setOrphanRawURLs(const std::vector<Platform::FileURL>& urls);
    void setUndoStack(std::vector<UndoEntry> entries);

    const std::vector<Platform::FileURL>& orphanRawURLs() const { return m_orphanRawURLs; }
    const std::vector<UndoEntry>& undoStack() const { return m_undoStack; }
    const std::optional<QByteArray>& folderBookmark() const { return m_folderBookmark; }
    const SecurityScopedResource* securityScopedResource() const { return m_securityScopedResource.get(); }
    ImageCache& imageCache() { return m_imageCache; }           ///< by position, 1200-pixel decodes
    ImageCache& smallThumbnails() { return m_smallThumbnails; } ///< by position, 200-pixel decodes

private:
    struct MoveKind;
    struct SmallPass;

    template <typename Value>
    void assign(Value& field, const Value& value, void (CullingViewModel::*changed)());

    bool isPosition(int index) const { return index >= 0 && index < photoCount(); }
    void markCurrent(ReviewState state);
    void movePhotos(const MoveKind& kind);
    void settleCurrentPhoto();

    bool isCurrent(int index, const Platform::FileURL& url) const;
    void scheduleUpgrade(int index);
    void loadCurrentImage(int index, int maxPixelSize, ImageCache& cache);
    void preloadSmallThumbnails(const std::shared_ptr<SmallPass>& pass);

    Platform::TaskScheduler& m_scheduler;
    Platform::UserDefaults& m_userDefaults;
    const Platform::FolderChooser m_folderChooser;

    Platform::Image m_currentImage;
    int m_currentIndex = 0;
    std::vector<PhotoItem> m_photoItems;
    Platform::FileURL m_folderURL;
    std::optional<QString> m_errorMessage;
    bool m_showRawSyncAlert = false;
    QString m_rawSyncAlertMessage = QStringLiteral("");
    bool m_keepZoom = false;
    const FeatureFlags m_features;
    std::vector<Platform::FileURL> m_orphanRawURLs;
    ImageCache m_imageCache{15};
    ImageCache m_smallThumbnails{2000};
    std::vector<UndoEntry> m_undoStack;
    std::optional<QByteArray> m_folderBookmark;
    std::optional<Platform::Task> m_currentLoadTask; // delivers the next image of the current photo
    std::optional<Platform::Task> m_upgradeTask;     // the pause before its large decode
    std::optional<Platform::Task> m_preloadAllTask;  // the pass that fills m_smallThumbnails
    std::unique_ptr<SecurityScopedResource> m_securityScopedResource;
};
