#include "Tests/Faults/FaultyDisk.h"

#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Tests/Support/FolderContent.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QBuffer>
#include <QTest>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <string>
#include <vector>

using Platform::FileURL;
using Platform::Image;
using Platform::Result;
using Platform::Task;
using Names = std::vector<std::string>;

namespace {

constexpr int patience = 20'000; // ms

/// Of two megabytes or so.
QByteArray largePhoto() {
    static const QByteArray photo = jpegFile(randomPixels({1600, 1000}));
    return photo;
}

/// Four photos on the disk, the first two of them approved.
struct Approved : CullingFixture {
    explicit Approved(const FaultyDisk& disk) {
        writePhotos(disk.files(), {"a.jpg", "b.jpg", "c.jpg", "d.jpg"});
        start().loadFolder(disk.url());
        for (int approved = 0; approved < 2; ++approved) {
            viewModel->toggleApproved();
            viewModel->nextPhoto();
        }
    }
};

using Trouble = std::function<void(FaultyDisk&)>;

} // namespace

Q_DECLARE_METATYPE(Trouble)

/// Photos decoded from a disk on which things go wrong, and moved there.
class FaultyDiskTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        if (const QString lacking = FaultyDisk::lacking(); !lacking.isEmpty()) {
            QSKIP(qPrintable(lacking));
        }
    }

    void aPhotoIsReadOnceAndInPiecesOf512Kibibytes() {
        constexpr qsizetype piece = 512LL * 1024;
        FaultyDisk disk;
        disk.files().write("a.jpg", largePhoto());
        for (const int size : {200, 1200, 0}) {
            const int before = disk.count(DiskCall::Read, "a.jpg");
            QVERIFY(decodeImage(disk.url().appendingPathComponent("a.jpg"), size));
            QCOMPARE(disk.count(DiskCall::Read, "a.jpg") - before, (largePhoto().size() + piece - 1) / piece);
        }
    }

    void aPictureOfAnotherFormatIsReadInSuchPiecesToo() {
        constexpr qsizetype piece = 512LL * 1024;
        FaultyDisk disk;
        QByteArray picture;
        QBuffer buffer(&picture);
        QVERIFY(randomPixels({1000, 700}).save(&buffer, "PNG"));
        disk.files().write("a.jpg", picture);
        QVERIFY(decodeImage(disk.url().appendingPathComponent("a.jpg"), 0));
        const qsizetype pieces = (picture.size() + piece - 1) / piece;
        QVERIFY(
            disk.count(DiskCall::Read, "a.jpg") <= pieces + 1); // the first also to see that it is no JPEG
    }

    void aPhotoThatIsLeftIsReadNoFurther() {
        FaultyDisk disk;
        disk.files().write("a.jpg", largePhoto());
        for (const int size : {200, 1200, 0}) {
            const int before = disk.count(DiskCall::Read, "a.jpg");
            disk.stall(DiskCall::Read);
            const Task task;
            auto decoded = std::async(std::launch::async,
                [&] { return decodeImage(disk.url().appendingPathComponent("a.jpg"), size, task); });
            QTRY_COMPARE_WITH_TIMEOUT(disk.stalled(), 1, patience);
            task.cancel();
            disk.release();
            QVERIFY(!decoded.get());
            QCOMPARE(disk.count(DiskCall::Read, "a.jpg") - before, 1);
        }
    }

    void whatCannotBeMovedIsNamedAndMovesWhenTheDiskIsWell_data() {
        QTest::addColumn<Trouble>("trouble");
        QTest::addColumn<QString>("message");
        const QString folder =
            QStringLiteral("Failed to move approved photos: The folder “approved” could not be made: %1.");
        const auto failing = [](DiskCall call, int error) {
            return Trouble([=](FaultyDisk& disk) { disk.fail(call, error); });
        };
        QTest::newRow("full") << failing(DiskCall::Change, ENOSPC) << folder.arg("the disk is full");
        QTest::newRow("read-only") << failing(DiskCall::Change, EROFS) << folder.arg("the disk is read-only");
        QTest::newRow("failing") << failing(DiskCall::Look, EIO) << folder.arg("the disk reported an error");
        const QString photos = QStringLiteral("Failed to move some approved photos:\n"
                                              "a.jpg: “a.jpg” could not be moved: %1.\n"
                                              "b.jpg: “b.jpg” could not be moved: %1.");
        const auto failingLater = [](int error) {
            return Trouble([=](FaultyDisk& disk) {
                disk.files().makeFolder("approved");
                disk.fail(DiskCall::Change, error);
            });
        };
        QTest::newRow("full later") << failingLater(ENOSPC) << photos.arg("the disk is full");
        QTest::newRow("read-only later") << failingLater(EROFS) << photos.arg("the disk is read-only");
        QTest::newRow("failing later") << failingLater(EIO) << photos.arg("the disk reported an error");
    }

    void whatCannotBeMovedIsNamedAndMovesWhenTheDiskIsWell() {
        QFETCH(Trouble, trouble);
        QFETCH(QString, message);
        FaultyDisk disk;
        Approved scene(disk);
        const QStringList before = checksumsIn(disk.files().url());
        trouble(disk);
        scene.viewModel->moveApproved();
        QCOMPARE(scene.viewModel->errorText(), message);
        QCOMPARE(checksumsIn(disk.files().url()), before);
        QCOMPARE(names(*scene.viewModel), (Names{"a.jpg", "b.jpg", "c.jpg", "d.jpg"}));
        QCOMPARE(scene.viewModel->approvedCount(), 2);

        scene.viewModel->clearErrorMessage();
        disk.fail(DiskCall::Look, 0);
        disk.fail(DiskCall::Change, 0);
        scene.viewModel->moveApproved();
        QVERIFY2(!scene.viewModel->hasErrorMessage(), qPrintable(scene.viewModel->errorText()));
        QCOMPARE(checksumsIn(disk.files().url()), moved(before, {"a.jpg", "b.jpg"}, "approved"));
        QCOMPARE(names(*scene.viewModel), (Names{"c.jpg", "d.jpg"}));
    }

    void aPhotoThatTheDiskTakesForAnotherOfTheSameMoveStays_data() {
        QTest::addColumn<bool>("makesUpNumbers");
        QTest::newRow("which has the number of the other") << false;
        QTest::newRow("and each look at it gives another number") << true;
    }

    void aPhotoThatTheDiskTakesForAnotherOfTheSameMoveStays() {
        QFETCH(bool, makesUpNumbers);
        FaultyDisk disk;
        disk.ignoreCase();
        if (makesUpNumbers) {
            disk.makeUpNumbers();
        }
        CullingFixture scene;
        const Names both{"IMG_1.JPG", "img_1.jpg"};
        writePhotos(scene.photos, {both[0], both[1], "other.jpg"});
        std::filesystem::create_directory_symlink(disk.url().path(), scene.photos.at("approved").path());
        scene.start().loadFolder(scene.photos.url());
        const std::map<std::string, QByteArray> before = {
            {both[0], contentOf(scene.photos.at(both[0]))}, {both[1], contentOf(scene.photos.at(both[1]))}};
        for (int photo = 0; photo < 3; ++photo) {
            scene.viewModel->toggleApproved();
            scene.viewModel->nextPhoto();
        }
        scene.viewModel->moveApproved();
        QCOMPARE(scene.viewModel->photoCount(), 1);
        const std::string left = names(*scene.viewModel).front();
        QVERIFY(std::ranges::count(both, left) == 1);
        QCOMPARE(scene.viewModel->errorText(),
            QStringLiteral(
                "Failed to move some approved photos:\n%1: In “approved” its name stands for another file.")
                .arg(QString::fromStdString(left)));
        QCOMPARE(contentOf(scene.photos.at(left)), before.at(left));
        QCOMPARE(contentOf(disk.files().at("IMG_1.JPG")), before.at(left == both[0] ? both[1] : both[0]));
        QVERIFY(exists(disk.files().at("OTHER.JPG")));
    }

    void aPhotoWhoseNameTheDiskTakesForAnotherOneStays() {
        FaultyDisk disk;
        disk.ignoreCase();
        disk.files().write("IMG_1.JPG", "another photo");
        disk.files().write("IMG_2.JPG", "to be replaced");
        CullingFixture scene;
        writePhotos(scene.photos, {"img_1.jpg", "IMG_2.JPG"});
        const QByteArray replacing = contentOf(scene.photos.at("IMG_2.JPG"));
        std::filesystem::create_directory_symlink(disk.url().path(), scene.photos.at("approved").path());
        scene.start().loadFolder(scene.photos.url());
        scene.viewModel->toggleApproved();
        scene.viewModel->nextPhoto();
        scene.viewModel->toggleApproved();
        scene.viewModel->moveApproved();
        QCOMPARE(names(*scene.viewModel), Names{"img_1.jpg"});
        QCOMPARE(scene.viewModel->errorText(),
            QStringLiteral("Failed to move some approved photos:\nimg_1.jpg: In “approved” its name stands "
                           "for another file."));
        QVERIFY(exists(scene.photos.at("img_1.jpg")));
        QCOMPARE(contentOf(disk.files().at("IMG_1.JPG")), QByteArray("another photo"));
        QCOMPARE(contentOf(disk.files().at("IMG_2.JPG")), replacing);
    }

    void aDiskThatIsGoneKeepsItsPhotosAndIsSaidToBeGone() {
        FaultyDisk disk;
        Approved scene(disk);
        const QStringList before = checksumsIn(disk.files().url());
        disk.pullOut();
        scene.viewModel->moveApproved();
        QCOMPARE(scene.viewModel->errorText(),
            QStringLiteral("Failed to move approved photos: The folder “approved” could not be made: the "
                           "disk is not there "
                           "any more."));
        disk.unmount();
        scene.viewModel->moveApproved();
        QCOMPARE(scene.viewModel->errorText(),
            QStringLiteral("Failed to move some approved photos:\n"
                           "a.jpg: “a.jpg” could not be moved: it does not exist any more.\n"
                           "b.jpg: “b.jpg” could not be moved: it does not exist any more."));
        QCOMPARE(checksumsIn(disk.files().url()), before);
        QCOMPARE(names(*scene.viewModel), (Names{"a.jpg", "b.jpg", "c.jpg", "d.jpg"}));
    }
};

QTEST_GUILESS_MAIN(FaultyDiskTest)
#include "FaultyDiskTest.moc"
