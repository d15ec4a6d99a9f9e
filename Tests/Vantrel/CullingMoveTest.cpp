#include "Tests/Support/WithPermissions.h"
#include "Tests/Support/WithoutPrivileges.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <unistd.h>

#include <filesystem>

using Platform::FileURL;
using Platform::TaskPriority;
using Names = std::vector<std::string>;

namespace {

enum class Move { approved, rejected };

/// Ten photos, IMG_0.jpg to IMG_9.jpg, and the twin operations under one name.
struct Loaded : CullingFixture {
    explicit Loaded(int count = 10) {
        Names photoNames;
        for (int index = 0; index < count; ++index) {
            photoNames.push_back(nameOf(index));
        }
        writePhotos(photos, photoNames);
        start().loadFolder(photos.url());
        scheduler.runAll();
    }
    static std::string nameOf(int index) { return "IMG_" + std::to_string(index) + ".jpg"; }
    OpenViewModel& model() { return *viewModel; }

    void mark(const std::vector<int>& indices, Move move) {
        const int before = model().currentIndex();
        for (const int index : indices) {
            model().navigateTo(index);
            move == Move::approved ? model().toggleApproved() : model().cycleState();
        }
        model().navigateTo(before);
        settle();
    }
    /// Lets the pause before the large decode pass, so that nothing is pending.
    void settle() {
        scheduler.advance(std::chrono::milliseconds(150));
        scheduler.runAll();
    }
    void run(Move move) { move == Move::approved ? model().moveApproved() : model().moveRejected(); }
};

std::string subfolder(Move move) {
    return move == Move::approved ? "approved" : "rejected";
}

} // namespace

class CullingMoveTest : public QObject {
    Q_OBJECT

    static void eachMove() {
        QTest::addColumn<int>("move");
        QTest::newRow("approved") << static_cast<int>(Move::approved);
        QTest::newRow("rejected") << static_cast<int>(Move::rejected);
    }
    static Move move() { return static_cast<Move>(*static_cast<int*>(QTest::qData("move", QMetaType::Int))); }

private slots:
    void markedPhotosMoveIntoTheSubfolderAndLeaveTheList_data() { eachMove(); }
    void markedPhotosMoveIntoTheSubfolderAndLeaveTheList() {
        Loaded loaded(4);
        const QByteArray content = contentOf(loaded.photos.at("IMG_1.jpg"));
        loaded.mark({1, 3}, move());
        loaded.run(move());
        QCOMPARE(names(loaded.model()), (Names{"IMG_0.jpg", "IMG_2.jpg"}));
        QCOMPARE(namesIn(loaded.photos.at(subfolder(move()))), (Names{"IMG_1.jpg", "IMG_3.jpg"}));
        QCOMPARE(namesIn(loaded.photos.url()), (Names{"IMG_0.jpg", "IMG_2.jpg", subfolder(move())}));
        QCOMPARE(contentOf(loaded.photos.at(subfolder(move()) + "/IMG_1.jpg")), content);
        QVERIFY(!loaded.model().hasErrorMessage());
    }

    void aLinkInPlaceOfTheSubfolderLeadsNoFurtherThanTheUserMayWrite_data() { eachMove(); }
    void aLinkInPlaceOfTheSubfolderLeadsNoFurtherThanTheUserMayWrite() {
        Loaded loaded(2);
        const TemporaryFolder elsewhere;
        elsewhere.write("IMG_1.jpg", "not to be touched");
        std::filesystem::create_directory_symlink(
            elsewhere.url().path(), loaded.photos.at(subfolder(move())).path());
        loaded.mark({0, 1}, move());
        {
            const WithoutPrivileges asAnyone;
            const WithPermissions readOnly(elsewhere.url(), std::filesystem::perms(0500));
            loaded.run(move());
        }
        QCOMPARE(names(loaded.model()), (Names{"IMG_0.jpg", "IMG_1.jpg"}));
        QVERIFY(loaded.model().errorText().contains(QStringLiteral("\nIMG_1.jpg: ")));
        QCOMPARE(namesIn(loaded.photos.url()), (Names{"IMG_0.jpg", "IMG_1.jpg", subfolder(move())}));
        QCOMPARE(namesIn(elsewhere.url()), Names{"IMG_1.jpg"});
        QCOMPARE(contentOf(elsewhere.at("IMG_1.jpg")), QByteArray("not to be touched"));
    }

    void aLinkInTheWayIsReplacedAndNotFollowed_data() { eachMove(); }
    void aLinkInTheWayIsReplacedAndNotFollowed() {
        Loaded loaded(1);
        const TemporaryFolder elsewhere;
        const FileURL outside = elsewhere.write("precious", "not to be touched");
        const QByteArray photo = contentOf(loaded.photos.at("IMG_0.jpg"));
        loaded.photos.makeFolder(subfolder(move()));
        const FileURL target = loaded.photos.at(subfolder(move()) + "/IMG_0.jpg");
        std::filesystem::create_symlink(outside.path(), target.path());
        loaded.mark({0}, move());
        loaded.run(move());
        QCOMPARE(contentOf(outside), QByteArray("not to be touched"));
        QVERIFY(!std::filesystem::is_symlink(target.path()));
        QCOMPARE(contentOf(target), photo);
    }

    void theOtherMarkStays_data() { eachMove(); }
    void theOtherMarkStays() {
        Loaded loaded(3);
        loaded.mark({0}, Move::approved);
        loaded.mark({1}, Move::rejected);
        loaded.run(move());
        QCOMPARE(loaded.model().photoCount(), 2);
        QCOMPARE(loaded.model().approvedCount(), move() == Move::approved ? 0 : 1);
        QCOMPARE(loaded.model().rejectedCount(), move() == Move::approved ? 1 : 0);
    }

    void withNothingMarkedTheSubfolderIsMadeAndTheStateSettled_data() { eachMove(); }
    void withNothingMarkedTheSubfolderIsMadeAndTheStateSettled() {
        Loaded loaded(3);
        loaded.mark({1}, move() == Move::approved ? Move::rejected : Move::approved);
        loaded.model().smallThumbnails().write(2, std::nullopt);
        QVERIFY(!loaded.model().imageCache().storage().empty());
        loaded.run(move());
        QVERIFY(namesIn(loaded.photos.at(subfolder(move()))).empty());
        QCOMPARE(loaded.model().photoCount(), 3);
        QVERIFY(!loaded.model().canUndo());
        QVERIFY(loaded.model().imageCache().storage().empty());
        QCOMPARE(loaded.scheduler.waiting(TaskPriority::Background), 1); // preloading again
        loaded.scheduler.advance(std::chrono::milliseconds(150));
        QCOMPARE(loaded.scheduler.waiting(TaskPriority::UserInitiated), 1); // navigated again
        QVERIFY(!loaded.model().hasErrorMessage());
    }

    void movingAllLeavesAnEmptyList_data() { eachMove(); }
    void movingAllLeavesAnEmptyList() {
        Loaded loaded(3);
        loaded.mark({0, 1, 2}, move());
        loaded.model().navigateTo(2);
        loaded.scheduler.advance(std::chrono::seconds(1));
        loaded.scheduler.runAll();
        loaded.run(move());
        QVERIFY(loaded.model().photoItems().empty());
        QCOMPARE(loaded.model().currentIndex(), 0);
        QVERIFY(loaded.model().currentImage().isNull());
        loaded.scheduler.advance(std::chrono::seconds(1));
        QCOMPARE(loaded.scheduler.waiting(TaskPriority::UserInitiated), 0);
        QCOMPARE(loaded.scheduler.waiting(TaskPriority::Background), 0);
        QVERIFY(loaded.model().hasFolder());
    }

    void aDecodeUnderWayDoesNotBringBackThePhotoThatWasMoved() {
        Loaded loaded(1);
        loaded.mark({0}, Move::approved);
        loaded.model().navigateTo(0);
        loaded.scheduler.advance(std::chrono::milliseconds(150));
        loaded.scheduler.runNext(TaskPriority::UserInitiated);
        loaded.run(Move::approved);
        loaded.scheduler.deliver();
        QVERIFY(loaded.model().currentImage().isNull());
        QVERIFY(loaded.model().imageCache().storage().empty());
    }

    void thePositionIsClampedToTheShorterList_data() { eachMove(); }
    void thePositionIsClampedToTheShorterList() {
        Loaded loaded(10);
        loaded.mark({2, 5}, move());
        loaded.model().navigateTo(8);
        loaded.settle();
        loaded.model().setCurrentIndex(9); // the position alone: its photo has still to be shown
        loaded.run(move());
        QCOMPARE(loaded.model().photoCount(), 8);
        QCOMPARE(loaded.model().currentIndex(), 7);
        QCOMPARE(loaded.model().currentPhotoName(), "IMG_9.jpg");
        loaded.settle();
        QVERIFY(shows(loaded.model().currentImage(), photoColor(9)));
    }

    void thePositionIsKeptNotThePhoto() {
        Loaded loaded(10);
        loaded.mark({1}, Move::approved);
        loaded.model().navigateTo(3);
        loaded.run(Move::approved);
        QCOMPARE(loaded.model().currentIndex(), 3);
        QCOMPARE(loaded.model().currentPhotoName(), "IMG_4.jpg");
        loaded.settle();
        QVERIFY(shows(loaded.model().currentImage(), photoColor(4)));
    }

    void aFileOfTheSameNameIsReplaced_data() { eachMove(); }
    void aFileOfTheSameNameIsReplaced() {
        Loaded loaded(2);
        loaded.photos.makeFolder(subfolder(move()));
        loaded.photos.write(subfolder(move()) + "/IMG_0.jpg", "an older one");
        const QByteArray content = contentOf(loaded.photos.at("IMG_0.jpg"));
        loaded.mark({0}, move());
        loaded.run(move());
        QCOMPARE(contentOf(loaded.photos.at(subfolder(move()) + "/IMG_0.jpg")), content);
        QVERIFY(!exists(loaded.photos.at("IMG_0.jpg")));
        QVERIFY(!loaded.model().hasErrorMessage());
    }

    void undoAfterAMoveDoesNothingUntilTheNextMark() {
        Loaded loaded(3);
        loaded.mark({0, 1}, Move::rejected);
        loaded.run(Move::rejected);
        loaded.model().undo();
        QCOMPARE(loaded.model().photoCount(), 1);
        QVERIFY(loaded.model().currentState() == ReviewState::unreviewed);
        loaded.model().toggleApproved();
        loaded.model().undo();
        QVERIFY(loaded.model().currentState() == ReviewState::unreviewed);
        QVERIFY(!loaded.model().canUndo());
    }

    void withoutAFolderNothingHappens_data() { eachMove(); }
    void withoutAFolderNothingHappens() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        move() == Move::approved ? viewModel.moveApproved() : viewModel.moveRejected();
        QVERIFY(!viewModel.hasErrorMessage());
    }

    void aSubfolderThatCannotBeMadeMovesNothing_data() { eachMove(); }
    void aSubfolderThatCannotBeMadeMovesNothing() {
        Loaded loaded(2);
        loaded.mark({0}, move());
        loaded.photos.write(subfolder(move()), "a file in the way");
        loaded.run(move());
        const QString prefix = QString("Failed to move %1 photos: ").arg(subfolder(move()).c_str());
        QVERIFY2(loaded.model().errorText().startsWith(prefix), qPrintable(loaded.model().errorText()));
        QVERIFY(loaded.model().errorText().size() > prefix.size());
        QVERIFY(!loaded.model().errorText().contains('\n'));
        QCOMPARE(loaded.model().photoCount(), 2);
        QVERIFY(loaded.model().canUndo());
        QVERIFY(exists(loaded.photos.at("IMG_0.jpg")));
    }

    void failuresAreListedOneALine_data() { eachMove(); }
    void failuresAreListedOneALine() {
        Loaded loaded(5);
        loaded.mark({0, 1, 2, 3}, move());
        loaded.photos.makeFolder(subfolder(move()));
        loaded.photos.makeFolder(
            subfolder(move()) + "/IMG_0.jpg"); // a folder in the way, and not an empty one
        loaded.photos.write(subfolder(move()) + "/IMG_0.jpg/inside", "x");
        unlink(loaded.photos.at("IMG_1.jpg").path().c_str());
        unlink(loaded.photos.at("IMG_3.jpg").path().c_str());
        loaded.run(move());
        const QStringList lines = loaded.model().errorText().split('\n');
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines[0], QString("Failed to move some %1 photos:").arg(subfolder(move()).c_str()));
        QVERIFY(lines[1].startsWith("IMG_0.jpg: ") && lines[1].size() > 20);
        QVERIFY(lines[2].startsWith("IMG_1.jpg: ") && lines[2].size() > 20);
        QVERIFY(lines[3].startsWith("IMG_3.jpg: ") && lines[3].size() > 20);
        QCOMPARE(names(loaded.model()), (Names{"IMG_0.jpg", "IMG_1.jpg", "IMG_3.jpg", "IMG_4.jpg"}));
        QVERIFY(exists(loaded.photos.at("IMG_0.jpg")));
        QVERIFY(exists(loaded.photos.at(subfolder(move()) + "/IMG_2.jpg")));
        QVERIFY(exists(loaded.photos.at(subfolder(move()) + "/IMG_0.jpg/inside")));
    }

    void aPhotoThatFailedKeepsItsMarkAndMovesTheNextTime() {
        Loaded loaded(2);
        loaded.mark({0}, Move::approved);
        loaded.photos.makeFolder("approved");
        loaded.photos.makeFolder("approved/IMG_0.jpg");
        loaded.photos.write("approved/IMG_0.jpg/inside", "x");
        loaded.run(Move::approved);
        QCOMPARE(loaded.model().approvedCount(), 1);
        std::filesystem::remove_all(loaded.photos.at("approved/IMG_0.jpg").path());
        loaded.run(Move::approved);
        QCOMPARE(names(loaded.model()), Names{"IMG_1.jpg"});
        QVERIFY(loaded.model().hasErrorMessage()); // an earlier message stays until it is dismissed
    }

    void theListIsUpToDateBeforeTheMessageComes() {
        Loaded loaded(3);
        loaded.mark({0, 1}, Move::approved);
        unlink(loaded.photos.at("IMG_0.jpg").path().c_str());
        int photosAtMessage = 0;
        QObject::connect(&loaded.model(), &CullingViewModel::errorMessageChanged,
            [&] { photosAtMessage = loaded.model().photoCount(); });
        loaded.run(Move::approved);
        QCOMPARE(photosAtMessage, 2);
    }

    void aRawFileBesideThePhotoStays() {
        Loaded loaded(1);
        loaded.photos.write("IMG_0.ARW", "raw");
        loaded.mark({0}, Move::approved);
        loaded.run(Move::approved);
        QVERIFY(exists(loaded.photos.at("IMG_0.ARW")));
    }

    void namesThatAreNotUtf8Move() {
        CullingFixture fixture;
        const std::string latin1 = "caf\xe9.jpg";
        const std::string lineFeed = "two\nlines.jpg";
        const std::string longest = std::string(251, 'n') + ".jpg";
        writePhotos(fixture.photos, {latin1, lineFeed, longest});
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        for (int step = 0; step < 3; ++step) {
            viewModel.toggleApproved();
            viewModel.nextPhoto();
        }
        viewModel.moveApproved();
        QCOMPARE(namesIn(fixture.photos.at("approved")), (Names{latin1, longest, lineFeed}));
        QVERIFY(!viewModel.hasErrorMessage());
    }

    void aNameWithALineFeedStillTakesOneErrorLine() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"two\nlines.jpg"});
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        viewModel.toggleApproved();
        unlink(fixture.photos.at("two\nlines.jpg").path().c_str());
        viewModel.moveApproved();
        QCOMPARE(viewModel.errorText().count('\n'), 1);
    }

    void smallThumbnailsOfTheOldPositionsAreKept() {
        Loaded loaded(3);
        loaded.mark({0}, Move::approved);
        const auto first = loaded.model().smallThumbnails().read(0);
        loaded.run(Move::approved);
        QVERIFY(loaded.model().smallThumbnails().read(0) == first);
    }
};

QTEST_GUILESS_MAIN(CullingMoveTest)
#include "CullingMoveTest.moc"
