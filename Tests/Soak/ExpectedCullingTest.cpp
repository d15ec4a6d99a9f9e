#include "Tests/Soak/ExpectedCulling.h"

#include <QTest>

/// What the soak takes for right must be right.
class ExpectedCullingTest : public QObject {
    Q_OBJECT

private slots:
    void walkingGoesRoundAtBothEnds() {
        ExpectedCulling culling(40);
        culling.walk(-3);
        QCOMPARE(culling.photo(), 37);
        culling.walk(83);
        QCOMPARE(culling.photo(), 0);
    }

    void aVerdictReplacesAnotherAndIsTakenBackBySayingItAgain() {
        ExpectedCulling culling(40);
        culling.mark(Verdict::Rejected);
        culling.mark(Verdict::Approved);
        QCOMPARE(culling.verdict(), Verdict::Approved);
        culling.mark(Verdict::Approved);
        QCOMPARE(culling.verdict(), Verdict::None);
    }

    void undoGoesBackToTheNewestMarkAndWhatWasBefore() {
        ExpectedCulling culling(40);
        culling.mark(Verdict::Rejected);
        culling.walk(2);
        culling.mark(Verdict::Approved);
        culling.mark(Verdict::Rejected);
        culling.walk(5);
        culling.undo();
        QCOMPARE(culling.photo(), 2);
        QCOMPARE(culling.verdict(), Verdict::Approved);
        culling.undo();
        culling.undo();
        QCOMPARE(culling.photo(), 0);
        QCOMPARE(culling.verdict(), Verdict::None);
        QVERIFY(!culling.canUndo());
    }

    void aMoveKeepsThePositionAndLeavesNothingToTakeBack() {
        ExpectedCulling culling(40);
        culling.mark(Verdict::Approved);
        culling.walk(2);
        culling.mark(Verdict::Approved);
        culling.walk(-1);
        culling.mark(Verdict::Rejected);
        QCOMPARE(culling.photosWith(Verdict::Approved), (std::vector{0, 2}));
        culling.move(Verdict::Approved);
        QCOMPARE(culling.count(), 38);
        QCOMPARE(culling.photo(), 3); // stands now where photo 1 stood
        QVERIFY(!culling.canUndo());
        QCOMPARE(culling.photosWith(Verdict::Rejected), std::vector{1});
    }

    void aMoveOfTheLastPhotoMakesTheOneBeforeItCurrent() {
        ExpectedCulling culling(40);
        culling.walk(-1);
        culling.mark(Verdict::Rejected);
        culling.move(Verdict::Rejected);
        QCOMPARE(culling.photo(), 38);
    }
};

QTEST_APPLESS_MAIN(ExpectedCullingTest)
#include "ExpectedCullingTest.moc"
