#include "Tests/Support/Sanitizers.h"
#include "Tests/Vantrel/ScreenFixture.h"

#include <QTest>

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>

using Platform::FileURL;

/// Far more of everything than anybody has: what the user does is answered within a frame of the screen all the same.
class SizesTest : public QObject {
    Q_OBJECT

private slots:
    void keysAreAnsweredAmongAHundredThousandPhotos();
    void keysAreAnsweredWhereNamesAreAsLongAsTheyCanBe();
    void fiftyThousandMarksAreTakenBackOneByOne();
    void tenThousandOrphansAreReadAndDeleted();
};

namespace {

constexpr std::chrono::nanoseconds frame = std::chrono::nanoseconds(std::chrono::seconds(1)) / 60;

/// Processor time that the calling thread has taken, which no other program on the machine makes longer.
std::chrono::nanoseconds processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// What it takes, in the middle of several times.
std::chrono::nanoseconds usualTime(const std::function<void()>& action) {
    std::array<std::chrono::nanoseconds, 9> times{};
    for (auto& time : times) {
        const auto before = processorTime();
        action();
        time = processorTime() - before;
    }
    std::ranges::sort(times);
    return times[times.size() / 2];
}

/// Many files of one content, their names of so many bytes or longer; a file system allows only so many names for one.
void writeMany(const TemporaryFolder& folder, int count, const std::string& extension,
    const QByteArray& content, std::size_t nameLength = 0) {
    constexpr int mostNames = 20000;
    FileURL original;
    for (int index = 0; index < count; ++index) {
        std::string name = "IMG_" + std::to_string(index) + extension;
        name.insert(0, std::max(nameLength, name.size()) - name.size(), 'I');
        if (index % mostNames == 0) {
            original = folder.write(name, content);
        } else {
            QCOMPARE(link(original.path().c_str(), folder.at(name).path().c_str()), 0);
        }
    }
}

#define ANSWERS_WITHIN_A_FRAME(action)                                                                       \
    do {                                                                                                     \
        const auto time = usualTime(action);                                                                 \
        QVERIFY2(isSanitized || time < frame, qPrintable(QStringLiteral("%1 µs").arg(time.count() / 1000))); \
    } while (false)

void keysAreAnswered(ScreenFixture& screen) {
    const auto pressing = [&screen](Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        return [&screen, key, modifiers] {
            screen.press(key, modifiers);
            screen.picture();
        };
    };
    ANSWERS_WITHIN_A_FRAME(pressing(Qt::Key_Right));
    ANSWERS_WITHIN_A_FRAME(pressing(Qt::Key_X));
    ANSWERS_WITHIN_A_FRAME(pressing(Qt::Key_Space));
    ANSWERS_WITHIN_A_FRAME(pressing(Qt::Key_Z, Qt::ControlModifier));
    ANSWERS_WITHIN_A_FRAME(pressing(Qt::Key_Left));
}

} // namespace

void SizesTest::keysAreAnsweredAmongAHundredThousandPhotos() {
    ScreenFixture screen;
    writeMany(screen.photos, 100'000, ".jpg", flatPhoto(photoColor(0), QSize(30, 20)));
    screen.open(screen.photos.url());
    QCOMPARE(screen.model().photoCount(), 100'000);
    screen.picture();
    keysAreAnswered(screen);
}

void SizesTest::keysAreAnsweredWhereNamesAreAsLongAsTheyCanBe() {
    constexpr std::size_t longestName = 255;
    ScreenFixture screen;
    writeMany(screen.photos, 1000, ".jpg", flatPhoto(photoColor(0), QSize(30, 20)), longestName);
    screen.open(screen.photos.url());
    QCOMPARE(screen.model().photoItems().front().filename().size(), longestName);
    screen.picture();
    keysAreAnswered(screen);
}

void SizesTest::fiftyThousandMarksAreTakenBackOneByOne() {
    constexpr int count = 50'000;
    CullingFixture fixture;
    writeMany(fixture.photos, count, ".jpg", flatPhoto(photoColor(0), QSize(30, 20)));
    fixture.start();
    fixture.open(fixture.photos.url());
    OpenViewModel& model = *fixture.viewModel;
    for (int index = 0; index < count; ++index) {
        index % 2 == 0 ? model.toggleApproved() : model.cycleState();
        model.nextPhoto();
    }
    QCOMPARE(model.approvedCount(), count / 2);
    QCOMPARE(model.rejectedCount(), count / 2);
    ANSWERS_WITHIN_A_FRAME([&] { model.undo(); });
    while (model.canUndo()) {
        model.undo();
    }
    QCOMPARE(model.approvedCount() + model.rejectedCount(), 0);
    QCOMPARE(model.currentIndex(), 0);
}

void SizesTest::tenThousandOrphansAreReadAndDeleted() {
    ScreenFixture screen(threePhotos, {.isSyncRawFeatureEnabled = true});
    writeMany(screen.photos, 10'000, ".ARW", "raw");
    screen.click("Sync RAW");
    QVERIFY(screen.isOpen("rawSyncAlert"));
    screen.picture();
    ANSWERS_WITHIN_A_FRAME([&] {
        screen.press(Qt::Key_PageDown);
        screen.picture();
    });
    screen.click("Delete");
    screen.picture();
    QCOMPARE(namesIn(screen.photos.url()), threePhotos);
}

QTEST_MAIN(SizesTest)
#include "SizesTest.moc"
