#include "Tests/EndToEnd/FaultyDiskFixture.h"
#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/Support/Sanitizers.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QElapsedTimer>
#include <QTest>

#include <X11/keysym.h>

#include <chrono>
#include <string>

using namespace std::chrono_literals;

/// The disk is, at once or soon, such.
#define SOON(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, patience)

namespace {

constexpr Key approveKey = XK_space;
constexpr Key rejectKey = XK_x;

// The tasks that read a photo while it is the current one: its small decode, its large one, and the pass that preloads.
constexpr int readersOfCurrent = 3;

// Longer than anything takes, and shorter than anybody waits for a disk.
constexpr int soon = isSanitized ? 20'000 : 2000; // ms

} // namespace

/// A disk that takes its time, or does not answer at all, under the folder that is open.
class SlowDiskTest : public FaultyDiskFixture {
    Q_OBJECT

private slots:
    void aPhotoThatStallsHoldsUpNothingAndShowsWhenItComes() {
        writePhotos(8, readablePhotoSize);
        m_disk->stall(DiskCall::Read, nameOf(3));
        QVERIFY(startOnDisk());
        QVERIFY(walk(XK_Right, {"photo 1", "photo 2"}));

        press({XK_Right});
        SOON(m_disk->stalled() == readersOfCurrent);
        press({approveKey}); // its mark shows over the photo that is still on the screen
        SEES("photo 2, approved");
        press({rejectKey});
        SEES("photo 2, rejected");
        QVERIFY(walk(XK_Right, {"photo 4", "photo 5", "photo 6"}));
        QVERIFY(walk(XK_Left, {"photo 5", "photo 4"}));
        press({XK_Left, approveKey});
        SEES("photo 4, approved");

        m_disk->release();
        SEES("photo 3, approved");
        QVERIFY(walk(XK_Right, {"photo 4"}));
    }

    void preloadingGoesOnPastAPhotoThatStalls() {
        writePhotos(8, readablePhotoSize);
        m_disk->stall(DiskCall::Read, nameOf(2));
        QVERIFY(startOnDisk());
        SOON(m_disk->count(DiskCall::Read, nameOf(7)) > 0);
        QCOMPARE(m_disk->count(DiskCall::Read, nameOf(2)), 1);
        QCOMPARE(m_disk->stalled(), 1);
        m_disk->release();
        QVERIFY(walk(XK_Right, {"photo 1", "photo 2"}));
    }

    void manyPhotosThatStallHoldUpNothing() {
        constexpr int count = 23;
        constexpr int last = count - 1;
        writePhotos(count, readablePhotoSize);
        for (int index = 1; index < last; ++index) {
            m_disk->stall(DiskCall::Read, nameOf(index));
        }
        m_photos->write("other.jpg", readablePhoto(7));
        QVERIFY(startOnDisk());
        for (int index = 1; index < last; ++index) {
            press({XK_Right});
            SOON(m_disk->count(DiskCall::Read, nameOf(index)) > 1); // both decodes are under way
        }
        press({approveKey});
        SEES("photo 0, approved");
        QVERIFY(walk(XK_Right, {"photo 2"}));

        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 7");
        QVERIFY(openFolder(m_disk->url()));
        SEES("photo 0");
        QVERIFY(walk(XK_Left, {"photo 2"}));
        press({XK_Left});
        m_disk->release();
        SEES("photo 1");
    }

    void aDiskThatNeitherReadsNorFindsHoldsUpNoKey() {
        writePhotos(8, readablePhotoSize);
        QVERIFY(startOnDisk());
        QVERIFY(walk(XK_Right, {"photo 1"}));
        SOON(m_disk->count(DiskCall::Read, nameOf(7)) > 0); // those before it are preloaded
        m_disk->stall(DiskCall::Look);
        m_disk->stall(DiskCall::Read);
        m_disk->stall(DiskCall::Change);
        QVERIFY(walk(XK_Right, {"photo 2"}));
        SOON(m_disk->stalled() > 0); // its large decode
        QElapsedTimer timer;
        timer.start();
        QVERIFY(walk(XK_Right, {"photo 3", "photo 4"}));
        press({rejectKey});
        SEES("photo 4, rejected");
        QVERIFY2(timer.elapsed() < soon, qPrintable(QString::number(timer.elapsed())));
        m_disk->release();
        QVERIFY(walk(XK_Left, {"photo 3"}));
    }

    void aDiskThatAnswersNothingIsLeftForAnother() {
        writePhotos(3, readablePhotoSize);
        m_photos->write("other.jpg", readablePhoto(7));
        QVERIFY(startOnDisk());
        SOON(m_disk->count(DiskCall::Read, nameOf(2)) > 0);
        m_disk->stall(DiskCall::Look);
        m_disk->stall(DiskCall::Read);
        QVERIFY(openFolder(m_photos->url())); // by a chooser that does not begin where nothing answers
        SEES("photo 7");
    }

    void aChooserThatLooksAtADiskThatAnswersNothingHoldsUpNoKeyOnceItIsClosed() {
        m_photos->write("a.jpg", readablePhoto(0));
        m_photos->write("b.jpg", readablePhoto(1));
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        QVERIFY(showChooser());
        m_disk->stall(DiskCall::Look);
        m_screen->press({XK_Alt_L, XK_Up}); // to the folder that holds this one, and the disk
        SOON(m_disk->stalled() > 0);
        press({XK_Escape});
        SOON(m_application->isInFront());
        QVERIFY(walk(XK_Right, {"photo 1"}));
    }

    void aRememberedFolderThatDoesNotAnswerIsLeftAloneAndKept() {
        writePhotos(3, readablePhotoSize);
        QVERIFY(startOnDisk());
        QVERIFY(closeWindow());
        m_disk->stall(DiskCall::Look);
        QVERIFY(start());
        SEES("open a folder");
        QVERIFY(closeWindow());
        m_disk->release();
        QVERIFY(start());
        SEES("photo 0");
    }

    void aFirstPhotoThatStallsShowsWhenItComes() {
        writePhotos(3, readablePhotoSize);
        m_disk->stall(DiskCall::Read, nameOf(0));
        QVERIFY(start());
        QVERIFY(openFolder(m_disk->url()));
        SEES("no images, panels below");
        QVERIFY(walk(XK_Right, {"photo 1"}));
        press({XK_Left});
        m_disk->release();
        SEES("photo 0");
    }

    void aZoomWhoseFileStallsSharpensWhenItComes() {
        writePhotos(3, readablePhotoSize * 8);
        QVERIFY(startOnDisk());
        SOON(m_disk->count(DiskCall::Read, nameOf(2)) > 0);
        m_disk->stall(DiskCall::Read, nameOf(0));
        m_screen->movePointer(m_application->window().content.center());
        m_screen->turnWheel(16, {XK_Control_L});
        SOON(m_disk->stalled() == 1);
        QCOMPARE(resolutionIn(m_application->picture()), QStringLiteral("1.6K"));
        m_screen->turnWheel(-16, {XK_Control_L}); // answered, and drawn
        QVERIFY(walk(XK_Right, {"photo 1"}));
        QVERIFY(walk(XK_Left, {"photo 0"}));
        m_screen->turnWheel(16, {XK_Control_L});
        SOON(m_disk->stalled() == 3); // the one left, the large decode, and the larger
        m_disk->release();
        READS_RESOLUTION("Full");
    }

    void keysAreAnsweredWhileEachReadTakesItsTime() {
        writePhotos(6, readablePhotoSize * 4);
        m_disk->slowDown(DiskCall::Read, 200ms);
        QVERIFY(startOnDisk());
        m_disk->stall(DiskCall::Read);
        press({XK_Right, approveKey});
        SEES("photo 0, approved"); // before the photo can have come
        m_disk->release();
        SEES("photo 1, approved");
        press({XK_Right, XK_Right, XK_Right, XK_Right, rejectKey});
        SEES("photo 5, rejected");
        QVERIFY(walk(XK_Left, {"photo 4", "photo 3"}));
    }

    void theProgramEndsWhileReadsStall() {
        writePhotos(8, readablePhotoSize);
        QVERIFY(startOnDisk());
        SOON(m_disk->count(DiskCall::Read, nameOf(7)) > 0);
        QVERIFY(closeWindow());

        for (int index = 1; index < 8; ++index) {
            m_disk->stall(DiskCall::Read, nameOf(index));
        }
        QVERIFY(start());
        SEES("photo 0");
        press({XK_Right});
        SOON(m_disk->stalled() == readersOfCurrent);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(closeWindow());
        const auto elapsed = timer.elapsed();
        QVERIFY2(elapsed < soon, qPrintable(QString::number(elapsed)));
    }
};

QTEST_MAIN(SlowDiskTest)
#include "SlowDiskTest.moc"
