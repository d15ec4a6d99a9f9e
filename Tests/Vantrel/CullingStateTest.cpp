#include "Tests/Vantrel/CullingFixture.h"

#include <QSignalSpy>
#include <QTest>

using Platform::FileURL;
using Platform::Image;

namespace {

Image somePicture() {
    return Image(QImage(4, 3, QImage::Format_RGB32));
}

} // namespace

class CullingStateTest : public QObject {
    Q_OBJECT

private slots:
    void aFreshViewModelIsEmpty() {
        CullingFixture fixture;
        const OpenViewModel& viewModel = fixture.start();
        QVERIFY(viewModel.currentImage().isNull());
        QVERIFY(!viewModel.hasCurrentImage());
        QCOMPARE(viewModel.currentIndex(), 0);
        QVERIFY(viewModel.photoItems().empty());
        QVERIFY(viewModel.folderURL().isEmpty());
        QVERIFY(!viewModel.hasFolder());
        QVERIFY(!viewModel.errorMessage().has_value());
        QVERIFY(!viewModel.showRawSyncAlert());
        QCOMPARE(viewModel.rawSyncAlertMessage(), QString(""));
        QVERIFY(!viewModel.keepZoom());
        QVERIFY(viewModel.currentURL().isEmpty());
        QCOMPARE(viewModel.currentPhotoName(), "");
        QVERIFY(viewModel.undoStack().empty());
        QVERIFY(viewModel.orphanRawURLs().empty());
        QVERIFY(!viewModel.folderBookmark().has_value());
        QVERIFY(viewModel.securityScopedResource() == nullptr);
    }

    void theFeaturesAreOffUnlessTheViewModelIsMadeWithThem() {
        CullingFixture fixture;
        const OpenViewModel& plain = fixture.start();
        QVERIFY(!plain.isLockZoomFeatureEnabled());
        QVERIFY(!plain.isSyncRawFeatureEnabled());
        const OpenViewModel& full = fixture.start({true, true});
        QVERIFY(full.isLockZoomFeatureEnabled());
        QVERIFY(full.isSyncRawFeatureEnabled());
    }

    void theCachesHoldFifteenLargeAndTwoThousandSmallImages() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QCOMPARE(viewModel.imageCache().capacity(), 15);
        QCOMPARE(viewModel.smallThumbnails().capacity(), 2000);
    }

    void aPositionOutOfRangeHasNoCurrentPhoto() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg"});
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        for (const int index : {-1, 2, 1000}) {
            viewModel.setCurrentIndex(index);
            QVERIFY(viewModel.currentURL().isEmpty());
            QCOMPARE(viewModel.currentPhotoName(), "");
            QVERIFY(viewModel.currentState() == ReviewState::unreviewed);
        }
        viewModel.setCurrentIndex(1);
        QVERIFY(viewModel.currentURL() == fixture.photos.at("b.jpg"));
        QCOMPARE(viewModel.currentPhotoName(), "b.jpg");
    }

    void anEqualIndexIsAssignedSilently() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QSignalSpy spy(&viewModel, &CullingViewModel::currentIndexChanged);
        viewModel.setCurrentIndex(3);
        viewModel.setCurrentIndex(3);
        QCOMPARE(spy.count(), 1);
    }

    void equalTextsAndFlagsAreAssignedSilently() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QSignalSpy errors(&viewModel, &CullingViewModel::errorMessageChanged);
        viewModel.setErrorMessage(QString());
        viewModel.setErrorMessage(QString(""));
        viewModel.setErrorMessage(std::nullopt);
        viewModel.clearErrorMessage();
        QCOMPARE(errors.count(), 2);
        QSignalSpy zooms(&viewModel, &CullingViewModel::keepZoomChanged);
        viewModel.setKeepZoom(true);
        viewModel.setKeepZoom(true);
        QCOMPARE(zooms.count(), 1);
        QSignalSpy alerts(&viewModel, &CullingViewModel::showRawSyncAlertChanged);
        viewModel.setShowRawSyncAlert(false);
        QCOMPARE(alerts.count(), 0);
        viewModel.setShowRawSyncAlert(true);
        viewModel.setShowRawSyncAlert(true);
        QCOMPARE(alerts.count(), 1);
    }

    void anEqualFolderAndAlertTextAreAssignedSilently() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QSignalSpy folders(&viewModel, &CullingViewModel::folderURLChanged);
        viewModel.setFolderURL(FileURL("/p/shoot"));
        viewModel.setFolderURL(FileURL("/p/shoot/"));
        QCOMPARE(folders.count(), 1);
        QSignalSpy texts(&viewModel, &CullingViewModel::rawSyncAlertMessageChanged);
        viewModel.setRawSyncAlertMessage("found");
        viewModel.setRawSyncAlertMessage("found");
        QCOMPARE(texts.count(), 1);
    }

    void listsOfUrlsAreComparedByValue() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QSignalSpy spy(&viewModel, &CullingViewModel::orphanRawURLsChanged);
        viewModel.setOrphanRawURLs({FileURL("/p/a.ARW")});
        viewModel.setOrphanRawURLs({FileURL("/p/a.ARW")});
        QCOMPARE(spy.count(), 1);
    }

    void imagesAreComparedByIdentity() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QSignalSpy spy(&viewModel, &CullingViewModel::currentImageChanged);
        const Image picture = somePicture();
        viewModel.setCurrentImage(picture);
        viewModel.setCurrentImage(picture);
        QCOMPARE(spy.count(), 1);
        viewModel.setCurrentImage(somePicture()); // equal pixels, another image
        QCOMPARE(spy.count(), 2);
        viewModel.setCurrentImage(Image());
        viewModel.setCurrentImage(Image());
        QCOMPARE(spy.count(), 3);
    }

    void theListOfPhotosAndTheUndoHistoryAlwaysNotify() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QSignalSpy photos(&viewModel, &CullingViewModel::photoItemsChanged);
        viewModel.setPhotoItems({});
        viewModel.setPhotoItems({});
        QCOMPARE(photos.count(), 2);
        QSignalSpy history(&viewModel, &CullingViewModel::undoStackChanged);
        viewModel.setUndoStack({});
        viewModel.setUndoStack({});
        QCOMPARE(history.count(), 2);
    }

    void fillingACacheNotifiesNobody() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QSignalSpy spy(&viewModel, &CullingViewModel::currentImageChanged);
        viewModel.imageCache().write(0, somePicture());
        QCOMPARE(spy.count(), 0);
    }

    void theCurrentPhotoFollowsPositionAndList() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        QSignalSpy spy(&viewModel, &CullingViewModel::currentPhotoChanged);
        viewModel.setCurrentIndex(1);
        viewModel.setPhotoItems({});
        QCOMPARE(spy.count(), 2);
    }

    void aViewModelThatIsGoneIsDeliveredNothing() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg"});
        fixture.start().loadFolder(fixture.photos.url());
        fixture.viewModel->nextPhoto();
        fixture.scheduler.runNext(Platform::TaskPriority::UserInitiated); // decoded, not yet delivered
        fixture.viewModel.reset();
        fixture.scheduler.advance(std::chrono::seconds(1));
        fixture.scheduler.runAll();
        QCOMPARE(fixture.scheduler.waiting(Platform::TaskPriority::UserInitiated), 0);
        QCOMPARE(fixture.scheduler.waiting(Platform::TaskPriority::Background), 0);
    }
};

QTEST_GUILESS_MAIN(CullingStateTest)
#include "CullingStateTest.moc"
