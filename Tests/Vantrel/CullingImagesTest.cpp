#include "Tests/Vantrel/CullingFixture.h"

#include <QSignalSpy>
#include <QTest>

#include <chrono>
#include <filesystem>

using namespace std::chrono_literals;
using Platform::Image;
using Platform::TaskPriority;

namespace {

constexpr auto userInitiated = TaskPriority::UserInitiated;
constexpr auto background = TaskPriority::Background;

/// Photos larger than every decode of them, so that the size tells which decode is shown.
struct Loaded : CullingFixture {
    explicit Loaded(int count) {
        std::vector<std::string> photoNames;
        photoNames.reserve(static_cast<std::size_t>(count));
        for (int index = 0; index < count; ++index) {
            photoNames.push_back("IMG_" + std::to_string(index) + ".jpg");
        }
        writePhotos(photos, photoNames, {1500, 1000});
        start().loadFolder(photos.url());
    }
    OpenViewModel& model() { return *viewModel; }
    bool showsPhoto(int index, int size) {
        return shows(model().currentImage(), photoColor(index)) && longSide(model().currentImage()) == size;
    }
};

} // namespace

class CullingImagesTest : public QObject {
    Q_OBJECT

private slots:
    void anUnknownPhotoKeepsThePreviousOneUntilItsSmallDecodeArrives() {
        Loaded loaded(3);
        loaded.model().navigateTo(1);
        QCOMPARE(loaded.model().currentIndex(), 1);
        QVERIFY(loaded.showsPhoto(0, 1200));
        loaded.scheduler.runNext(userInitiated);
        QVERIFY(loaded.showsPhoto(0, 1200));
        loaded.scheduler.deliver();
        QVERIFY(loaded.showsPhoto(1, 200));
        QVERIFY(loaded.model().smallThumbnails().read(1) == loaded.model().currentImage());
        loaded.scheduler.advance(150ms);
        loaded.scheduler.runNext(userInitiated);
        loaded.scheduler.deliver();
        QVERIFY(loaded.showsPhoto(1, 1200));
        QVERIFY(loaded.model().imageCache().read(1) == loaded.model().currentImage());
    }

    void theUpgradeStartsAfter150MillisecondsAndNotBefore() {
        Loaded loaded(2);
        loaded.scheduler.runAll();
        loaded.model().navigateTo(1);
        QVERIFY(loaded.showsPhoto(1, 200));
        loaded.scheduler.advance(150ms - 1ns);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 0);
        loaded.scheduler.advance(1ns);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 1);
    }

    void thePauseBeginsAnewWithEachNavigation() {
        Loaded loaded(2);
        loaded.scheduler.runAll();
        loaded.model().navigateTo(1);
        loaded.scheduler.advance(100ms);
        loaded.model().navigateTo(1);
        loaded.scheduler.advance(149ms);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 0);
        loaded.scheduler.advance(1ms);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 1);
    }

    void theLargeDecodeInTheCacheShowsAtOnceAndIsRepeated() {
        Loaded loaded(2);
        loaded.scheduler.runAll();
        const Image cached = *loaded.model().imageCache().read(0);
        loaded.model().navigateTo(1);
        loaded.model().navigateTo(0);
        QVERIFY(loaded.model().currentImage() == cached);
        loaded.scheduler.advance(150ms);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 1);
        loaded.scheduler.runAll();
        QVERIFY(loaded.model().currentImage() != cached);
        QVERIFY(loaded.showsPhoto(0, 1200));
    }

    void theCachedNeighbourNeedsNoDecode() {
        Loaded loaded(2);
        loaded.scheduler.runAll();
        const Image neighbour = *loaded.model().smallThumbnails().read(1);
        loaded.model().nextPhoto();
        QVERIFY(loaded.model().currentImage() == neighbour);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 0);
    }

    void photosPassedOverGetNoLargeDecode() {
        Loaded loaded(5);
        loaded.scheduler.runAll();
        for (int press = 0; press < 3; ++press) {
            loaded.model().nextPhoto();
            loaded.scheduler.advance(40ms);
        }
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 0);
        loaded.scheduler.advance(1s);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 1);
        loaded.scheduler.runAll();
        QVERIFY(loaded.showsPhoto(3, 1200));
        QVERIFY(!loaded.model().imageCache().read(1));
        QVERIFY(!loaded.model().imageCache().read(2));
    }

    void aSmallDecodeOfAPhotoThatWasLeftIsDropped() {
        Loaded loaded(3);
        loaded.model().navigateTo(1);
        loaded.scheduler.runNext(userInitiated); // decoded, not delivered
        loaded.model().navigateTo(2);
        loaded.scheduler.deliver();
        QVERIFY(loaded.showsPhoto(0, 1200));
        QVERIFY(!loaded.model().smallThumbnails().read(1));
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 1);
    }

    void aLargeDecodeOfAPhotoThatWasLeftIsDropped() {
        Loaded loaded(3);
        loaded.scheduler.runAll();
        loaded.model().navigateTo(1);
        loaded.scheduler.advance(150ms);
        loaded.scheduler.runNext(userInitiated);
        loaded.model().navigateTo(2);
        loaded.scheduler.deliver();
        QVERIFY(loaded.showsPhoto(2, 200));
        QVERIFY(!loaded.model().imageCache().read(1));
    }

    void comingBackDoesNotReviveADecodeThatWasCancelled() {
        Loaded loaded(3);
        loaded.scheduler.runAll();
        loaded.model().navigateTo(1);
        loaded.scheduler.advance(150ms);
        loaded.scheduler.runNext(userInitiated);
        loaded.model().navigateTo(2);
        loaded.model().navigateTo(1);
        loaded.scheduler.deliver();
        QVERIFY(loaded.showsPhoto(1, 200));
    }

    void theUpgradeAbandonsASmallDecodeThatIsStillUnderWay() {
        Loaded loaded(2);
        loaded.model().navigateTo(1);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 1);
        loaded.scheduler.advance(150ms);
        QCOMPARE(
            loaded.scheduler.waiting(userInitiated), 1); // the small one is cancelled, the large one waits
        loaded.scheduler.runNext(userInitiated);
        loaded.scheduler.deliver();
        QVERIFY(loaded.showsPhoto(1, 1200));
    }

    void indicesOutOfRangeAreIgnored() {
        Loaded loaded(2);
        loaded.scheduler.runAll();
        const Image before = loaded.model().currentImage();
        for (const int index : {-1, 2, 100}) {
            loaded.model().navigateTo(index);
            QCOMPARE(loaded.model().currentIndex(), 0);
            QVERIFY(loaded.model().currentImage() == before);
            loaded.scheduler.advance(1s);
            QCOMPARE(loaded.scheduler.waiting(userInitiated), 0);
        }
    }

    void thePhotoAlreadyShownIsLookedUpAndUpgradedAnew() {
        Loaded loaded(2);
        QSignalSpy spy(&loaded.model(), &CullingViewModel::currentIndexChanged);
        const Image other(QImage(8, 8, QImage::Format_RGB32));
        loaded.model().imageCache().write(0, other);
        loaded.model().navigateTo(0);
        QCOMPARE(spy.count(), 0);
        QVERIFY(loaded.model().currentImage() == other);
        loaded.scheduler.advance(150ms);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 1);
    }

    void navigatingRefreshesTheImagesRecency() {
        Loaded loaded(3);
        loaded.scheduler.runAll();
        QCOMPARE(loaded.model().smallThumbnails().order(), (std::vector{0, 1, 2}));
        loaded.model().navigateTo(1);
        QCOMPARE(loaded.model().smallThumbnails().order(), (std::vector{0, 2, 1}));
    }

    void aPhotoThatCannotBeDecodedShowsNothingAndIsPassedBy() {
        CullingFixture fixture;
        fixture.photos.write("a.jpg", flatPhoto(photoColor(0)));
        fixture.photos.write("b.jpg", "this is no picture");
        fixture.photos.write("c.jpg", flatPhoto(photoColor(2)));
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        viewModel.nextPhoto();
        viewModel.smallThumbnails().write(
            1, Image(QImage(1, 1, QImage::Format_RGB32))); // goes with the failure
        fixture.scheduler.runNext(userInitiated);
        fixture.scheduler.deliver();
        QVERIFY(viewModel.currentImage().isNull());
        QVERIFY(!viewModel.smallThumbnails().read(1));
        fixture.scheduler.advance(150ms);
        fixture.scheduler.runAll();
        QVERIFY(viewModel.currentImage().isNull());
        QVERIFY(!viewModel.imageCache().read(1));
        viewModel.nextPhoto();
        fixture.scheduler.runAll();
        QVERIFY(shows(viewModel.currentImage(), photoColor(2)));
        QVERIFY(!viewModel.hasErrorMessage());
    }

    void aPhotoInAnotherFormatUnderAJpegNameShows() {
        CullingFixture fixture;
        QImage picture(400, 300, QImage::Format_RGB32);
        picture.fill(photoColor(4));
        QVERIFY(picture.save(QString::fromStdString(fixture.photos.at("a.jpg").path().native()), "PNG"));
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        QVERIFY(shows(viewModel.currentImage(), photoColor(4)));
    }

    void aPhotoThatIsStillBeingWrittenShowsWhenItIsComplete() {
        Loaded loaded(1);
        const QByteArray whole = flatPhoto(photoColor(7), {1500, 1000});
        loaded.photos.write("IMG_1.jpg", whole.left(10));
        loaded.model().loadFolder(loaded.photos.url());
        loaded.scheduler.runAll();
        loaded.model().nextPhoto();
        loaded.scheduler.runAll();
        QVERIFY(loaded.model().currentImage().isNull());
        loaded.photos.write("IMG_1.jpg", whole);
        loaded.scheduler.advance(150ms);
        loaded.scheduler.runAll();
        QVERIFY(loaded.showsPhoto(7, 1200));
    }

    void anUpgradePendingWhileAnEmptyFolderIsLoadedDoesNothing() {
        Loaded loaded(1);
        loaded.scheduler.runAll();
        loaded.model().navigateTo(0);
        TemporaryFolder empty;
        loaded.model().loadFolder(empty.url());
        loaded.scheduler.advance(1s);
        QCOMPARE(loaded.scheduler.waiting(userInitiated), 0);
        QVERIFY(loaded.model().currentImage().isNull());
    }

    void aDecodeOfTheOldFolderNeverShowsInTheNewOne() {
        Loaded loaded(1);
        loaded.scheduler.runAll();
        loaded.model().navigateTo(0);
        loaded.scheduler.advance(150ms);
        loaded.scheduler.runNext(userInitiated); // the old folder's photo 0, decoded and not delivered
        TemporaryFolder others;
        others.write("z.jpg", flatPhoto(photoColor(5), {1500, 1000}));
        loaded.model().loadFolder(others.url());
        loaded.scheduler.deliver();
        QVERIFY(loaded.showsPhoto(5, 1200));
        QVERIFY(shows(*loaded.model().imageCache().read(0), photoColor(5)));
    }

    void theFifteenLastLargeDecodesAreKept() {
        Loaded loaded(17);
        loaded.scheduler.runAll();
        for (int index = 1; index < 17; ++index) {
            loaded.model().navigateTo(index);
            loaded.scheduler.advance(150ms);
            loaded.scheduler.runAll();
        }
        QCOMPARE(std::ssize(loaded.model().imageCache().order()), 15);
        QVERIFY(!loaded.model().imageCache().read(1));
        QVERIFY(loaded.model().imageCache().read(2).has_value());
    }

    void thePassDecodesOnePhotoAtATimeInDisplayOrder() {
        Loaded loaded(3);
        for (int index = 0; index < 3; ++index) {
            QCOMPARE(loaded.scheduler.waiting(background), 1);
            loaded.scheduler.runNext(background);
            QVERIFY(!loaded.model().smallThumbnails().read(index));
            loaded.scheduler.deliver();
            QVERIFY(shows(*loaded.model().smallThumbnails().read(index), photoColor(index)));
            QCOMPARE(longSide(*loaded.model().smallThumbnails().read(index)), 200);
        }
        QCOMPARE(loaded.scheduler.waiting(background), 0);
    }

    void thePassGoesOnPastAPhotoThatDoesNotComeForFiveSeconds() {
        Loaded loaded(4);
        loaded.scheduler.runNext(background);
        loaded.scheduler.deliver();
        loaded.scheduler.advance(5s - 1ms);
        QCOMPARE(loaded.scheduler.waiting(background), 1);
        loaded.scheduler.advance(1ms);
        QCOMPARE(loaded.scheduler.waiting(background), 2);
        loaded.scheduler.advance(5s);
        QCOMPARE(loaded.scheduler.waiting(background), 3);
        loaded.scheduler.runAll(); // the late ones are kept like the others
        for (int index = 0; index < 4; ++index) {
            QVERIFY(shows(*loaded.model().smallThumbnails().read(index), photoColor(index)));
        }
    }

    void thePassHasAtMostEightPhotosOnTheirWay() {
        Loaded loaded(12);
        loaded.scheduler.advance(1min);
        QCOMPARE(loaded.scheduler.waiting(background), 8);
        loaded.scheduler.runNext(background);
        loaded.scheduler.deliver();
        QCOMPARE(loaded.scheduler.waiting(background), 8);
        loaded.scheduler.runAll();
        QCOMPARE(std::ssize(loaded.model().smallThumbnails().storage()), 12);
    }

    void thePassTouchesNeitherImageNorPosition() {
        Loaded loaded(3);
        QSignalSpy images(&loaded.model(), &CullingViewModel::currentImageChanged);
        QSignalSpy positions(&loaded.model(), &CullingViewModel::currentIndexChanged);
        loaded.scheduler.runAll();
        QCOMPARE(images.count(), 0);
        QCOMPARE(positions.count(), 0);
    }

    void thePassSkipsAPhotoThatCannotBeDecoded() {
        CullingFixture fixture;
        fixture.photos.write("a.jpg", "this is no picture");
        fixture.photos.write("b.jpg", flatPhoto(photoColor(1)));
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        fixture.scheduler.runAll();
        QVERIFY(!viewModel.smallThumbnails().read(0));
        QVERIFY(shows(*viewModel.smallThumbnails().read(1), photoColor(1)));
    }

    void thePassDoesNotDecodeAgainWhatNavigationHasDecoded() {
        Loaded loaded(2);
        loaded.model().navigateTo(1);
        loaded.scheduler.runNext(userInitiated);
        loaded.scheduler.deliver();
        const Image decoded = *loaded.model().smallThumbnails().read(1);
        loaded.scheduler.runNext(background);
        loaded.scheduler.deliver();
        QCOMPARE(loaded.scheduler.waiting(background), 0);
        QVERIFY(loaded.model().smallThumbnails().read(1) == decoded);
    }

    void anotherFolderStopsTheOldPassBeforeItsNextPhoto() {
        Loaded loaded(3);
        loaded.scheduler.runNext(background); // photo 0 of the old folder, decoded and not delivered
        TemporaryFolder others;
        writePhotos(others, {"y.jpg", "z.jpg"}, {600, 400});
        loaded.model().loadFolder(others.url());
        QCOMPARE(loaded.scheduler.waiting(background), 1);
        loaded.scheduler.deliver();
        QVERIFY(loaded.model().smallThumbnails().storage().empty());
        loaded.scheduler.runAll();
        QCOMPARE(std::ssize(loaded.model().smallThumbnails().storage()), 2);
    }

    void anEmptyFolderStopsTheOldPassToo() {
        Loaded loaded(3);
        TemporaryFolder empty;
        loaded.model().loadFolder(empty.url());
        QCOMPARE(loaded.scheduler.waiting(background), 0);
        loaded.scheduler.runAll();
        QVERIFY(loaded.model().smallThumbnails().storage().empty());
    }

    void aPassOverMorePhotosThanAreKeptKeepsTheLast() {
        CullingFixture fixture;
        constexpr int count = 2003;
        const auto first = fixture.photos.write("0.jpg", flatPhoto(photoColor(0), {8, 8}));
        for (int index = 1; index < count; ++index) {
            const auto next = fixture.photos.at(std::to_string(index) + ".jpg");
            std::filesystem::create_hard_link(first.path(), next.path());
        }
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        fixture.scheduler.runAll();
        QCOMPARE(std::ssize(viewModel.smallThumbnails().order()), 2000);
        QCOMPARE(viewModel.smallThumbnails().order().front(), 3);
        QCOMPARE(viewModel.smallThumbnails().order().back(), count - 1);
        QCOMPARE(fixture.scheduler.waiting(background), 0);
    }

    void aSecondPassSkipsWhatIsThere() {
        Loaded loaded(3);
        loaded.scheduler.runAll();
        loaded.model().smallThumbnails().write(1, std::nullopt);
        loaded.model().preloadAllSmallThumbnails();
        QCOMPARE(loaded.scheduler.waiting(background), 1);
        loaded.scheduler.runNext(background);
        loaded.scheduler.deliver();
        QCOMPARE(loaded.scheduler.waiting(background), 0);
        QVERIFY(loaded.model().smallThumbnails().read(1).has_value());
    }
};

QTEST_GUILESS_MAIN(CullingImagesTest)
#include "CullingImagesTest.moc"
