#include "Tests/EndToEnd/FaultyDiskFixture.h"
#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/Support/FolderContent.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <X11/keysym.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// The disk holds, at once or soon, these files of these contents.
#define HOLDS(checksums) QTRY_COMPARE_WITH_TIMEOUT(checksumsIn(m_disk->files().url()), checksums, patience)

namespace {

const std::vector<Key> moveApprovedKeys = {XK_Control_L, XK_a};
constexpr Key approveKey = XK_space;
constexpr Key rejectKey = XK_x;

} // namespace

/// A disk that fails, fills up, or goes away under the folder that is open.
class FailingDiskTest : public FaultyDiskFixture {
    Q_OBJECT

private slots:
    void whatTheDiskRefusesIsSaidAndMovesWhenItIsWellAgain() {
        writePhotos(4, readablePhotoSize);
        const QStringList before = checksumsIn(m_disk->files().url());
        QVERIFY(startOnDisk());
        press({approveKey, XK_Right, approveKey});
        SEES("photo 1, approved");
        for (const int error : {ENOSPC, EROFS, EIO}) {
            m_disk->fail(DiskCall::Change, error);
            m_screen->press(moveApprovedKeys);
            SEES("an alert");
            QCOMPARE(checksumsIn(m_disk->files().url()), before);
            press({XK_Escape});
            SEES("photo 1, approved");
        }
        m_disk->fail(DiskCall::Change, 0);
        m_screen->press(moveApprovedKeys);
        HOLDS(moved(before, {nameOf(0), nameOf(1)}, "approved"));
        SEES("photo 3");
    }

    void aPhotoThatCannotBeReadShowsAsSuchUntilItCan() {
        writePhotos(4, readablePhotoSize);
        QVERIFY(startOnDisk());
        m_disk->fail(DiskCall::Read, EIO);
        QVERIFY(walk(XK_Right, {"no images, panels below"}));
        press({XK_Right, rejectKey, XK_Right});
        SEES("no images, panels below");
        m_disk->fail(DiskCall::Read, 0);
        QVERIFY(walk(XK_Left, {"photo 2, rejected", "photo 1", "photo 0"}));
    }

    void aZoomedPhotoStaysAsItIsWhateverBecomesOfItsFile() {
        writePhotos(2, readablePhotoSize * 8);
        const QByteArray content = contentOf(photo());
        QVERIFY(start());
        const std::vector<std::function<void()>> damages = {
            [&] { std::filesystem::remove(photo().path()); },
            [&] { std::filesystem::resize_file(photo().path(), 1000); },
            [&] {
                m_disk->files().write(nameOf(0), flatPhoto(Qt::white, {3200, 4800}));
            },
            [&] { m_disk->fail(DiskCall::Read, EIO); },
        };
        for (const auto& damage : damages) {
            QVERIFY(openFolder(m_disk->url())); // which decodes the photo once
            SEES("photo 0");
            damage();
            zoom(16);
            QVERIFY(isAskedForPhoto());
            QCOMPARE(resolutionIn(m_application->picture()), QStringLiteral("1.6K"));
            QVERIFY(isNear(colorInTheMiddle(), readablePhotoColor(0)));

            m_disk->fail(DiskCall::Read, 0);
            m_disk->files().write(nameOf(0), content);
            zoom(1);
            QVERIFY(isAskedForPhoto()); // again, since nothing of what came before was taken
            READS_RESOLUTION("Full");
            QVERIFY(isNear(colorInTheMiddle(), readablePhotoColor(0)));
            QVERIFY(walk(XK_Right, {"photo 1"}));
        }
    }

    void aDiskThatIsPulledOutLosesNothingAndIsLeftForAnother() {
        writePhotos(6, readablePhotoSize);
        m_photos->write("other.jpg", readablePhoto(9));
        const QStringList before = checksumsIn(m_disk->files().url());
        QVERIFY(startOnDisk());
        press({approveKey});
        SEES("photo 0, approved");
        m_disk->stall(DiskCall::Read);
        press({XK_Right});
        QTRY_VERIFY_WITH_TIMEOUT(m_disk->stalled() > 0, patience);

        m_disk->pullOut(); // amid a read
        SEES("no images, panels below");
        QVERIFY(walk(XK_Right, {"no images, panels below"}));
        m_screen->press(moveApprovedKeys);
        SEES("an alert");
        press({XK_Escape});
        SEES("no images, panels below");
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 9");
        QCOMPARE(checksumsIn(m_disk->files().url()), before);
    }

    void aDiskThatIsUnmountedLosesNothingAndIsLeftForAnother() {
        writePhotos(6, readablePhotoSize);
        m_photos->write("other.jpg", readablePhoto(9));
        const QStringList before = checksumsIn(m_disk->files().url());
        QVERIFY(startOnDisk());
        press({approveKey});
        SEES("photo 0, approved");
        m_disk->unmount();
        QVERIFY(walk(XK_Right, {"no images, panels below"}));
        m_screen->press(moveApprovedKeys);
        SEES("an alert");
        press({XK_Escape, XK_Left});
        SEES("no images, panels below");
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 9");
        QCOMPARE(checksumsIn(m_disk->files().url()), before);
    }

private:
    Platform::FileURL photo() const { return m_disk->files().at(nameOf(0)); }

    void zoom(int notches) {
        m_looks = m_disk->count(DiskCall::Look, nameOf(0));
        m_screen->movePointer(m_application->window().content.center());
        m_screen->turnWheel(notches, {XK_Control_L});
    }

    /// Whether the photo is asked for, at once or soon, since it was zoomed.
    bool isAskedForPhoto() {
        return QTest::qWaitFor([&] { return m_disk->count(DiskCall::Look, nameOf(0)) > m_looks; }, patience);
    }

    QColor colorInTheMiddle() const {
        const QImage window = m_application->picture();
        return window.pixelColor(window.rect().center());
    }

    int m_looks = 0;
};

QTEST_MAIN(FailingDiskTest)
#include "FailingDiskTest.moc"
