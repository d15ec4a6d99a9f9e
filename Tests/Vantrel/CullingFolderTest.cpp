#include "Tests/Support/WithoutPrivileges.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using Platform::FileURL;
using Platform::TaskPriority;

namespace {

const QString bookmarkKey = QStringLiteral("LastFolderBookmark");

} // namespace

class CullingFolderTest : public QObject {
    Q_OBJECT

private slots:
    void jpegFilesAreListedInNameOrderAndOthersLeftOut() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"IMG_10.JPG", "IMG_2.jpeg", "IMG_1.jpg"});
        fixture.photos.write("notes.txt", "notes");
        const OpenViewModel& viewModel = openPhotos(fixture);
        QCOMPARE(names(viewModel), (std::vector<std::string>{"IMG_1.jpg", "IMG_2.jpeg", "IMG_10.JPG"}));
        for (const PhotoItem& item : viewModel.photoItems()) {
            QVERIFY(item.state() == ReviewState::unreviewed);
        }
    }

    void theExtensionAloneDecides() {
        CullingFixture fixture;
        for (const char* name : {"a.Jpeg", "b.JpG", ".hidden.jpg", "c.jpe", "d.jfif", "e.png", "f.jpg.txt",
                 "jpg", ".jpg", "g.jpgx", "h."}) {
            fixture.photos.write(name, "x");
        }
        fixture.photos.makeFolder("folder.jpg");
        QCOMPARE(names(openPhotos(fixture)),
            (std::vector<std::string>{".hidden.jpg", "a.Jpeg", "b.JpG", "folder.jpg"}));
    }

    void subfoldersAreNotEntered() {
        CullingFixture fixture;
        fixture.photos.makeFolder("deeper");
        writePhotos(fixture.photos, {"a.jpg", "deeper/b.jpg"});
        QCOMPARE(names(openPhotos(fixture)), std::vector<std::string>{"a.jpg"});
    }

    void theFirstPhotoShowsAtOnceAtTheLargeSize() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg"}, {2400, 1600});
        OpenViewModel& viewModel = openPhotos(fixture);
        QCOMPARE(viewModel.currentIndex(), 0);
        QVERIFY(shows(viewModel.currentImage(), photoColor(0)));
        QCOMPARE(viewModel.currentImage().pixels().size(), QSize(1200, 800));
        QVERIFY(viewModel.imageCache().read(0) == viewModel.currentImage());
    }

    void noUpgradeIsScheduledForTheFirstPhoto() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg"});
        openPhotos(fixture);
        fixture.scheduler.advance(std::chrono::seconds(10));
        QCOMPARE(fixture.scheduler.waiting(TaskPriority::UserInitiated), 0);
    }

    void theFolderMessageIsAskedAndCancellingChangesNothing() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg"});
        OpenViewModel& viewModel = openPhotos(fixture);
        fixture.scheduler.runAll();
        viewModel.nextPhoto();
        viewModel.toggleApproved();
        const auto item = viewModel.photoItems().front().id();
        const auto bookmark = viewModel.folderBookmark();
        fixture.choice.reset();
        fixture.chooserMessage.clear();
        viewModel.openFolder();
        QCOMPARE(fixture.chooserMessage, QString("Select a folder containing JPG images to review."));
        QVERIFY(viewModel.folderURL() == fixture.photos.url());
        QCOMPARE(viewModel.photoItems().front().id(), item);
        QCOMPARE(viewModel.currentIndex(), 1);
        QCOMPARE(viewModel.undoStack().size(), std::size_t(1));
        QVERIFY(viewModel.smallThumbnails().read(0).has_value());
        QVERIFY(viewModel.imageCache().read(0).has_value());
        QVERIFY(viewModel.folderBookmark() == bookmark);
    }

    void anotherFolderStartsAfresh() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg", "c.jpg"});
        TemporaryFolder others;
        others.write("z.jpg", flatPhoto(photoColor(9)));
        OpenViewModel& viewModel = openPhotos(fixture);
        fixture.scheduler.runAll();
        viewModel.previousPhoto();
        fixture.scheduler.advance(std::chrono::milliseconds(150));
        fixture.scheduler.runAll();
        QVERIFY(viewModel.imageCache().read(2).has_value());
        viewModel.cycleState();
        viewModel.setErrorMessage(QString("earlier"));
        fixture.open(others.url());
        QCOMPARE(names(viewModel), std::vector<std::string>{"z.jpg"});
        QCOMPARE(viewModel.currentIndex(), 0);
        QVERIFY(shows(viewModel.currentImage(), photoColor(9)));
        QCOMPARE(viewModel.imageCache().order(), std::vector{0});
        QVERIFY(shows(*viewModel.imageCache().read(0), photoColor(9)));
        QVERIFY(viewModel.smallThumbnails().storage().empty());
        QVERIFY(viewModel.undoStack().empty());
        QCOMPARE(viewModel.rejectedCount(), 0);
        QCOMPARE(viewModel.errorText(), QString("earlier"));
        QVERIFY(viewModel.securityScopedResource()->url() == others.url());
    }

    void theSameFolderLoadedTwiceHasNewIdentities() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg"});
        OpenViewModel& viewModel = openPhotos(fixture);
        const auto first = viewModel.photoItems().front().id();
        viewModel.loadFolder(fixture.photos.url());
        QVERIFY(viewModel.photoItems().front().id() != first);
    }

    void aFolderWithoutPhotosIsNoError() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg"});
        TemporaryFolder empty;
        empty.write("notes.txt", "notes");
        OpenViewModel& viewModel = openPhotos(fixture);
        viewModel.nextPhoto();
        fixture.open(empty.url());
        QVERIFY(viewModel.photoItems().empty());
        QCOMPARE(viewModel.currentIndex(), 0);
        QVERIFY(viewModel.currentImage().isNull());
        QVERIFY(!viewModel.hasErrorMessage());
        QVERIFY(viewModel.folderURL() == empty.url());
        fixture.scheduler.advance(std::chrono::seconds(1));
        QCOMPARE(fixture.scheduler.waiting(TaskPriority::Background), 0);
        fixture.scheduler.runAll();
        QVERIFY(viewModel.currentImage().isNull());
    }

    void aFolderThatCannotBeListedLeavesTheOldPhotos() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg"});
        OpenViewModel& viewModel = openPhotos(fixture);
        fixture.scheduler.runAll();
        viewModel.nextPhoto();
        viewModel.cycleState();
        const FileURL missing = fixture.photos.at("gone");
        fixture.open(missing);
        QCOMPARE(viewModel.errorText(), QString("Failed to read folder contents."));
        QVERIFY(viewModel.securityScopedResource() == nullptr);
        QVERIFY(viewModel.folderURL() == missing);
        QCOMPARE(names(viewModel), (std::vector<std::string>{"a.jpg", "b.jpg"}));
        QCOMPARE(viewModel.currentIndex(), 1);
        QVERIFY(shows(viewModel.currentImage(), photoColor(1)));
        QCOMPARE(viewModel.undoStack().size(), std::size_t(1));
        QVERIFY(viewModel.smallThumbnails().read(0).has_value());
    }

    void aFileInsteadOfAFolderCannotBeListed() {
        CullingFixture fixture;
        const FileURL file = fixture.photos.write("file", "not a folder");
        fixture.start();
        fixture.open(file);
        QCOMPARE(fixture.viewModel->errorText(), QString("Failed to read folder contents."));
    }

    void anUnreadableFolderCannotBeListed() {
        const WithoutPrivileges asAnyone;
        CullingFixture fixture;
        const FileURL folder = fixture.photos.makeFolder("locked");
        chmod(folder.path().c_str(), 0);
        fixture.start();
        fixture.open(folder);
        chmod(folder.path().c_str(), 0700);
        QCOMPARE(fixture.viewModel->errorText(), QString("Failed to read folder contents."));
    }

    void aFirstPhotoThatCannotBeDecodedShowsNothingAndLoadsTheRest() {
        CullingFixture fixture;
        fixture.photos.write("a.jpg", "this is no picture");
        fixture.photos.write("b.jpg", flatPhoto(photoColor(1)));
        OpenViewModel& viewModel = openPhotos(fixture);
        QVERIFY(viewModel.currentImage().isNull());
        QVERIFY(viewModel.imageCache().storage().empty());
        QCOMPARE(viewModel.photoCount(), 2);
        QCOMPARE(fixture.scheduler.waiting(TaskPriority::Background), 1);
    }

    void aHundredThousandPhotosAreListedInOrder() {
        CullingFixture fixture;
        const int count = 100000;
        const int folder = open(fixture.photos.url().path().c_str(), O_RDONLY | O_DIRECTORY);
        for (int index = count; index >= 1; --index) {
            const std::string name = "IMG_" + std::to_string(index) + ".jpg";
            QVERIFY(close(openat(folder, name.c_str(), O_CREAT | O_WRONLY, 0600)) == 0);
        }
        close(folder);
        const OpenViewModel& viewModel = openPhotos(fixture);
        QCOMPARE(viewModel.photoCount(), count);
        for (int index = 0; index < count; ++index) {
            const std::string& name = viewModel.photoItems()[index].filename();
            if (name != "IMG_" + std::to_string(index + 1) + ".jpg") {
                QFAIL(qPrintable(QString("%1 stands at %2").arg(name.c_str()).arg(index)));
            }
        }
    }

    void anUpgradePendingWhenAnotherFolderIsLoadedSharpensThatFoldersPhoto() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg"});
        TemporaryFolder others;
        others.write("z.jpg", flatPhoto(photoColor(9)));
        OpenViewModel& viewModel = openPhotos(fixture);
        viewModel.nextPhoto();
        viewModel.loadFolder(others.url());
        fixture.scheduler.advance(std::chrono::milliseconds(150));
        fixture.scheduler.runAll();
        QVERIFY(shows(viewModel.currentImage(), photoColor(9)));
    }

    void namesAreBytes() {
        CullingFixture fixture;
        const std::string latin1 = "caf\xe9.jpg";
        const std::string lineFeed = "two\nlines.jpg";
        const std::string longest = std::string(251, 'n') + ".jpg";
        writePhotos(fixture.photos, {latin1, lineFeed, longest});
        OpenViewModel& viewModel = openPhotos(fixture);
        QCOMPARE(names(viewModel), (std::vector<std::string>{latin1, longest, lineFeed}));
        QVERIFY(shows(viewModel.currentImage(), photoColor(0)));
        QCOMPARE(viewModel.currentPhotoTitle(), QStringLiteral(u"caf\uFFFD.jpg"));
        viewModel.previousPhoto();
        QCOMPARE(viewModel.currentPhotoTitle(), QStringLiteral(u"two\u240Alines.jpg"));
    }

    void entriesThatAreNoFilesHangNothing() {
        CullingFixture fixture;
        fixture.photos.makeFolder("a folder.jpg");
        fixture.photos.write("empty.jpg", "");
        QVERIFY(mkfifo(fixture.photos.at("fifo.jpg").path().c_str(), 0600) == 0);
        QVERIFY(symlink("nowhere", fixture.photos.at("link.jpg").path().c_str()) == 0);
        fixture.photos.write("photo.jpg", flatPhoto(photoColor(0)));
        OpenViewModel& viewModel = openPhotos(fixture);
        QCOMPARE(viewModel.photoCount(), 5);
        fixture.scheduler.runAll();
        for (int step = 0; step < 5; ++step) {
            viewModel.nextPhoto();
            fixture.scheduler.runAll();
            fixture.scheduler.advance(std::chrono::milliseconds(150));
            fixture.scheduler.runAll();
            QCOMPARE(viewModel.hasCurrentImage(), viewModel.currentPhotoName() == "photo.jpg");
        }
    }

    void aFolderThatVanishesAfterListingShowsNothingMoreAndLosesNothing() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg"});
        OpenViewModel& viewModel = openPhotos(fixture);
        unlink(fixture.photos.at("a.jpg").path().c_str());
        unlink(fixture.photos.at("b.jpg").path().c_str());
        rmdir(fixture.photos.url().path().c_str());
        viewModel.nextPhoto();
        fixture.scheduler.runAll();
        QVERIFY(viewModel.currentImage().isNull());
        QCOMPARE(viewModel.photoCount(), 2);
    }

    void theFirstLaunchStartsEmpty() {
        CullingFixture fixture;
        const OpenViewModel& viewModel = fixture.start();
        QVERIFY(!viewModel.hasFolder());
        QVERIFY(!viewModel.hasErrorMessage());
    }

    void theLastFolderIsReopened() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg", "b.jpg"});
        openPhotos(fixture);
        const OpenViewModel& viewModel = fixture.start();
        QVERIFY(viewModel.folderURL() == fixture.photos.url());
        QCOMPARE(viewModel.photoCount(), 2);
        QVERIFY(shows(viewModel.currentImage(), photoColor(0)));
        QVERIFY(!viewModel.hasErrorMessage());
    }

    void aFolderOfWhichNoBookmarkCanBeMadeLeavesTheEntry() {
        CullingFixture fixture;
        const FileURL folder = fixture.photos.makeFolder("shoot");
        fixture.start().loadFolder(folder);
        const QByteArray remembered = *fixture.userDefaults.data(bookmarkKey);
        const FileURL file = fixture.photos.write("file", "no folder");
        fixture.viewModel->loadFolder(file);
        QVERIFY(fixture.viewModel->hasErrorMessage());
        QCOMPARE(*fixture.userDefaults.data(bookmarkKey), remembered);
        QCOMPARE(*fixture.viewModel->folderBookmark(), remembered);
    }

    void aFolderThatFailedToListIsStillTheOneReopened() {
        const WithoutPrivileges asAnyone;
        CullingFixture fixture;
        const FileURL folder = fixture.photos.makeFolder("shoot");
        writePhotos(fixture.photos, {"shoot/a.jpg"});
        chmod(folder.path().c_str(), 0);
        fixture.start().loadFolder(folder);
        chmod(folder.path().c_str(), 0700);
        QVERIFY(fixture.viewModel->hasErrorMessage());
        QVERIFY(fixture.start().folderURL() == folder);
        QCOMPARE(fixture.viewModel->photoCount(), 1);
    }

    void aRenamedFolderIsFoundAgainAndTheEntryRewritten() {
        CullingFixture fixture;
        const FileURL before = fixture.photos.makeFolder("before");
        writePhotos(fixture.photos, {"before/a.jpg"});
        fixture.start().loadFolder(before);
        const QByteArray old = *fixture.userDefaults.data(bookmarkKey);
        const FileURL after = fixture.photos.at("after");
        std::filesystem::rename(before.path(), after.path());
        OpenViewModel& viewModel = fixture.start();
        QVERIFY(viewModel.folderURL() == after);
        QCOMPARE(viewModel.photoCount(), 1);
        QVERIFY(*fixture.userDefaults.data(bookmarkKey) != old);

        // The same without the load that follows it at the start.
        fixture.userDefaults.setData(bookmarkKey, old);
        QVERIFY(viewModel.restoreBookmark() == after);
        QVERIFY(*fixture.userDefaults.data(bookmarkKey) != old);
        QCOMPARE(*viewModel.folderBookmark(), old);
    }

    void aDeletedFolderIsSilentlyNotReopenedAndItsEntryStays() {
        CullingFixture fixture;
        const FileURL folder = fixture.photos.makeFolder("shoot");
        fixture.start().loadFolder(folder);
        const QByteArray entry = *fixture.userDefaults.data(bookmarkKey);
        std::filesystem::remove(folder.path());
        const OpenViewModel& viewModel = fixture.start();
        QVERIFY(!viewModel.hasFolder());
        QVERIFY(!viewModel.hasErrorMessage());
        QCOMPARE(*fixture.userDefaults.data(bookmarkKey), entry);
    }

    void anEntryThatIsNoBookmarkStartsEmpty() {
        CullingFixture fixture;
        fixture.userDefaults.setData(bookmarkKey, "\x01garbage");
        const OpenViewModel& viewModel = fixture.start();
        QVERIFY(!viewModel.hasFolder());
        QVERIFY(!viewModel.hasErrorMessage());
    }

    void accessToTheFolderIsHeldWhileItIsOpen() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg"});
        const OpenViewModel& viewModel = openPhotos(fixture);
        QVERIFY(viewModel.securityScopedResource() != nullptr);
        QVERIFY(viewModel.securityScopedResource()->url() == fixture.photos.url());
    }

private:
    static OpenViewModel& openPhotos(CullingFixture& fixture) {
        fixture.start();
        fixture.open(fixture.photos.url());
        return *fixture.viewModel;
    }
};

QTEST_GUILESS_MAIN(CullingFolderTest)
#include "CullingFolderTest.moc"
