#include "Tests/Vantrel/CullingFixture.h"

#include <QSignalSpy>
#include <QTest>

using Platform::TaskPriority;

namespace {

struct Loaded : CullingFixture {
    explicit Loaded(int count) {
        std::vector<std::string> photoNames;
        photoNames.reserve(static_cast<std::size_t>(count));
        for (int index = 0; index < count; ++index) {
            photoNames.push_back("IMG_" + std::to_string(index) + ".jpg");
        }
        writePhotos(photos, photoNames);
        start().loadFolder(photos.url());
        scheduler.runAll();
    }
    OpenViewModel& model() { return *viewModel; }
    ReviewState stateAt(int index) { return model().photoItems()[index].state(); }
};

} // namespace

class CullingReviewTest : public QObject {
    Q_OBJECT

private slots:
    void nextWrapsFromTheLastToTheFirst() {
        Loaded loaded(3);
        for (const int expected : {1, 2, 0, 1}) {
            loaded.model().nextPhoto();
            QCOMPARE(loaded.model().currentIndex(), expected);
            QVERIFY(shows(loaded.model().currentImage(), photoColor(expected)));
        }
    }

    void previousWrapsFromTheFirstToTheLast() {
        Loaded loaded(3);
        for (const int expected : {2, 1, 0, 2}) {
            loaded.model().previousPhoto();
            QCOMPARE(loaded.model().currentIndex(), expected);
        }
    }

    void withOnePhotoWalkingStillNavigates() {
        Loaded loaded(1);
        loaded.model().nextPhoto();
        loaded.scheduler.advance(std::chrono::milliseconds(150));
        QCOMPARE(loaded.scheduler.waiting(TaskPriority::UserInitiated), 1);
        loaded.scheduler.runAll();
        loaded.model().previousPhoto();
        loaded.scheduler.advance(std::chrono::milliseconds(150));
        QCOMPARE(loaded.scheduler.waiting(TaskPriority::UserInitiated), 1);
        QCOMPARE(loaded.model().currentIndex(), 0);
    }

    void withoutPhotosNothingHappens_data() {
        QTest::addColumn<bool>("isOpen");
        QTest::newRow("no folder") << false;
        QTest::newRow("an empty folder") << true;
    }
    void withoutPhotosNothingHappens() {
        QFETCH(bool, isOpen);
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start();
        if (isOpen) {
            viewModel.loadFolder(fixture.photos.url());
        }
        viewModel.nextPhoto();
        viewModel.previousPhoto();
        viewModel.cycleState();
        viewModel.toggleApproved();
        viewModel.undo();
        QCOMPARE(viewModel.currentIndex(), 0);
        QVERIFY(viewModel.currentState() == ReviewState::unreviewed);
        QVERIFY(!viewModel.canUndo());
        QVERIFY(!viewModel.hasErrorMessage());
    }

    void aPositionOutOfRangeIsNotMarked() {
        Loaded loaded(2);
        for (const int index : {-1, 2}) {
            loaded.model().setCurrentIndex(index);
            loaded.model().cycleState();
            loaded.model().toggleApproved();
            QVERIFY(!loaded.model().canUndo());
        }
        QCOMPARE(loaded.model().approvedCount() + loaded.model().rejectedCount(), 0);
    }

    void rejectingSwitchesBetweenRejectedAndUnreviewed() {
        Loaded loaded(1);
        loaded.model().toggleApproved();
        for (const auto expected : {ReviewState::rejected, ReviewState::unreviewed, ReviewState::rejected}) {
            loaded.model().cycleState();
            QVERIFY(loaded.model().currentState() == expected);
        }
    }

    void approvingSwitchesBetweenApprovedAndUnreviewed() {
        Loaded loaded(1);
        loaded.model().cycleState();
        for (const auto expected : {ReviewState::approved, ReviewState::unreviewed, ReviewState::approved}) {
            loaded.model().toggleApproved();
            QVERIFY(loaded.model().currentState() == expected);
        }
    }

    void markingStaysOnThePhoto() {
        Loaded loaded(3);
        loaded.model().nextPhoto();
        loaded.model().toggleApproved();
        QCOMPARE(loaded.model().currentIndex(), 1);
        loaded.model().cycleState();
        QCOMPARE(loaded.model().currentIndex(), 1);
        QVERIFY(loaded.stateAt(0) == ReviewState::unreviewed);
        QVERIFY(loaded.stateAt(2) == ReviewState::unreviewed);
    }

    void everyMarkIsRememberedBeforeItIsMade() {
        Loaded loaded(2);
        loaded.model().nextPhoto();
        ReviewState stateWhenRemembered = ReviewState::rejected;
        const auto look = [&] { stateWhenRemembered = loaded.model().currentState(); };
        QObject::connect(&loaded.model(), &CullingViewModel::undoStackChanged, look);
        loaded.model().toggleApproved();
        QVERIFY(stateWhenRemembered == ReviewState::unreviewed);
        QCOMPARE(loaded.model().undoStack().size(), std::size_t(1));
        QCOMPARE(loaded.model().undoStack().back().index, 1);
        QVERIFY(loaded.model().undoStack().back().previousState == ReviewState::unreviewed);
        loaded.model().toggleApproved();
        QCOMPARE(loaded.model().undoStack().size(), std::size_t(2));
        QVERIFY(loaded.model().undoStack().back().previousState == ReviewState::approved);
    }

    void markingWritesNothingToDisk() {
        Loaded loaded(2);
        loaded.model().toggleApproved();
        loaded.model().undo();
        QCOMPARE(namesIn(loaded.photos.url()), (std::vector<std::string>{"IMG_0.jpg", "IMG_1.jpg"}));
    }

    void countsFollowTheMarks() {
        Loaded loaded(4);
        QSignalSpy spy(&loaded.model(), &CullingViewModel::photoItemsChanged);
        loaded.model().toggleApproved();
        loaded.model().nextPhoto();
        loaded.model().toggleApproved();
        loaded.model().nextPhoto();
        loaded.model().cycleState();
        QCOMPARE(spy.count(), 3);
        QCOMPARE(loaded.model().approvedCount(), 2);
        QCOMPARE(loaded.model().rejectedCount(), 1);
        loaded.model().undo();
        QCOMPARE(loaded.model().rejectedCount(), 0);
    }

    void undoGoesBackToThePhoto() {
        Loaded loaded(8);
        loaded.model().navigateTo(3);
        loaded.model().cycleState();
        loaded.model().navigateTo(7);
        loaded.model().undo();
        QVERIFY(loaded.stateAt(3) == ReviewState::unreviewed);
        QCOMPARE(loaded.model().currentIndex(), 3);
        QVERIFY(shows(loaded.model().currentImage(), photoColor(3)));
    }

    void twoMarksNeedTwoUndos() {
        Loaded loaded(1);
        loaded.model().toggleApproved();
        loaded.model().cycleState();
        loaded.model().undo();
        QVERIFY(loaded.model().currentState() == ReviewState::approved);
        loaded.model().undo();
        QVERIFY(loaded.model().currentState() == ReviewState::unreviewed);
        loaded.model().undo();
        QVERIFY(loaded.model().currentState() == ReviewState::unreviewed);
    }

    void undoOfTheCurrentPhotosMarkNavigatesToo() {
        Loaded loaded(1);
        loaded.model().toggleApproved();
        loaded.model().undo();
        loaded.scheduler.advance(std::chrono::milliseconds(150));
        QCOMPARE(loaded.scheduler.waiting(TaskPriority::UserInitiated), 1);
    }

    void anEntryOutOfRangeIsUsedUpAndTheNextOneServes() {
        Loaded loaded(2);
        loaded.model().toggleApproved();
        loaded.model().setUndoStack(
            {{0, ReviewState::unreviewed}, {2, ReviewState::rejected}, {-1, ReviewState::rejected}});
        loaded.model().undo();
        loaded.model().undo();
        QVERIFY(loaded.stateAt(0) == ReviewState::approved);
        QCOMPARE(loaded.model().undoStack().size(), std::size_t(1));
        loaded.model().undo();
        QVERIFY(loaded.stateAt(0) == ReviewState::unreviewed);
    }

    void undoPublishesTheRemovalFirst() {
        Loaded loaded(1);
        loaded.model().toggleApproved();
        QStringList order;
        const auto note = [&](const QString& what) { return [&order, what] { order.append(what); }; };
        QObject::connect(&loaded.model(), &CullingViewModel::undoStackChanged, note("history"));
        QObject::connect(&loaded.model(), &CullingViewModel::photoItemsChanged, note("photos"));
        loaded.model().undo();
        QCOMPARE(order, (QStringList{"history", "photos"}));
        loaded.model().undo(); // nothing left: nothing published
        QCOMPARE(order.size(), 2);
    }

    void loadingAFolderEmptiesTheHistory() {
        Loaded loaded(2);
        loaded.model().toggleApproved();
        loaded.model().loadFolder(loaded.photos.url());
        QVERIFY(!loaded.model().canUndo());
        loaded.model().nextPhoto();
        loaded.model().undo();
        QCOMPARE(loaded.model().currentIndex(), 1);
    }

    void theHistoryHasNoBound() {
        Loaded loaded(1);
        for (int mark = 0; mark < 10001; ++mark) {
            loaded.model().toggleApproved();
        }
        QCOMPARE(loaded.model().undoStack().size(), std::size_t(10001));
        for (int mark = 0; mark < 10001; ++mark) {
            loaded.model().undo();
        }
        QVERIFY(loaded.model().currentState() == ReviewState::unreviewed);
    }
};

QTEST_GUILESS_MAIN(CullingReviewTest)
#include "CullingReviewTest.moc"
