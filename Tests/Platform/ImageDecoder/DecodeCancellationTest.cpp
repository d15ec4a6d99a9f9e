#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Platform/ImageDecoder/JpegDecompressor.h"
#include "Platform/ImageDecoder/PhotoRendering.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QTest>

#include <sys/inotify.h>
#include <unistd.h>

#include <cstring>
#include <thread>
#include <vector>

using namespace Platform;

namespace {

/// Grey rows without end, the task cancelled as soon as a given number of them has been read.
class CancellingRows final : public RowSource {
public:
    CancellingRows(const Task& task, int cancelledAfter) : m_task(task), m_cancelledAfter(cancelledAfter) {}

    int readRows(uchar* rows, qsizetype bytesPerLine, int count) override {
        for (int row = 0; row < count; ++row, ++m_rowsRead) {
            std::memset(rows + row * bytesPerLine, 128, static_cast<std::size_t>(bytesPerLine));
            if (m_rowsRead == m_cancelledAfter) {
                m_task.cancel();
            }
        }
        return count;
    }

    int rowsRead() const { return m_rowsRead; }

private:
    const Task m_task;
    const int m_cancelledAfter;
    int m_rowsRead = 0;
};

/// Tells when a file is read for the first time.
class ReadWatch {
public:
    explicit ReadWatch(const FileURL& file) : m_descriptor(inotify_init1(IN_CLOEXEC)) {
        inotify_add_watch(m_descriptor, file.path().c_str(), IN_ACCESS | IN_CLOSE_NOWRITE);
    }
    ReadWatch(const ReadWatch&) = delete;
    ReadWatch& operator=(const ReadWatch&) = delete;
    ~ReadWatch() { close(m_descriptor); }

    void wait() const {
        char event[4096];
        QVERIFY(read(m_descriptor, event, sizeof event) > 0);
    }

private:
    const int m_descriptor;
};

} // namespace

class DecodeCancellationTest : public QObject {
    Q_OBJECT

private slots:
    void aTaskCancelledBeforehandDecodesNothing_data();
    void aTaskCancelledBeforehandDecodesNothing();
    void aDecodeUnderWayEnds_data();
    void aDecodeUnderWayEnds();
    void noBandIsBegunOnceCancelled_data();
    void noBandIsBegunOnceCancelled();
    void theDecompressorStopsBetweenRows();
    void theDecompressorStopsBetweenScans();

private:
    TemporaryFolder m_folder;
};

void DecodeCancellationTest::aTaskCancelledBeforehandDecodesNothing_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("JPEG") << jpegFile(landscape(QSize(300, 200)));
    QTest::newRow("no picture") << QByteArray("It rained all day.\n");
}

void DecodeCancellationTest::aTaskCancelledBeforehandDecodesNothing() {
    QFETCH(QByteArray, file);
    const Task task;
    task.cancel();
    const auto image = decodeImage(m_folder.write("photo.jpg", file), 200, task);
    QVERIFY(!image);
    QCOMPARE(
        image.error().localizedDescription(), QStringLiteral("The decoding of “photo.jpg” was cancelled."));
}

void DecodeCancellationTest::aDecodeUnderWayEnds_data() {
    QTest::addColumn<bool>("isProgressive");
    QTest::addColumn<int>("maxPixelSize");
    QTest::newRow("full size") << false << 0;
    QTest::newRow("reduced") << false << 200;
    QTest::newRow("progressive") << true << 200;
}

void DecodeCancellationTest::aDecodeUnderWayEnds() {
    QFETCH(bool, isProgressive);
    QFETCH(int, maxPixelSize);
    JpegOptions options;
    options.isProgressive = isProgressive;
    const FileURL photo = m_folder.write("photo.jpg", jpegFile(landscape(QSize(4000, 3000)), options));
    // The other thread may wake so late that the decode is already done; then once more.
    constexpr int attempts = 50;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const Task task;
        const ReadWatch watch(photo);
        std::thread canceller([&] {
            watch.wait();
            task.cancel();
        });
        const auto image = decodeImage(photo, maxPixelSize, task);
        canceller.join();
        if (!image) {
            return;
        }
    }
    QFAIL("the decode never ended early");
}

void DecodeCancellationTest::noBandIsBegunOnceCancelled_data() {
    QTest::addColumn<QSize>("size");
    QTest::newRow("full size") << QSize(100, 10000);
    QTest::newRow("reduced") << QSize(10, 1000);
}

void DecodeCancellationTest::noBandIsBegunOnceCancelled() {
    QFETCH(QSize, size);
    const Task task;
    constexpr int cancelledAfter = 100;
    CancellingRows rows(task, cancelledAfter);
    const StoredPicture picture{rows, QSize(100, 10000), QSizeF(100, 10000), 1};
    ThreadTeam team(2);
    const auto image =
        render(picture, size, ColorTransform(ColorTransform::Pixels::Rgb, {}), "photo.jpg", task, team);
    QVERIFY(image && image->isNull());
    // A band is 32 rows of the result; the reduced one's are each made of ten, and of some that reach over.
    QVERIFY(rows.rowsRead() <= cancelledAfter + 32 * 10 + 40);
}

void DecodeCancellationTest::theDecompressorStopsBetweenRows() {
    const FileURL photo = m_folder.write("photo.jpg", jpegFile(landscape(QSize(300, 200))));
    auto file = ReadOnlyFile::open(photo);
    const Task task;
    JpegDecompressor jpeg(*file, task);
    QVERIFY(jpeg.readHeader());
    QVERIFY(jpeg.start(1, 0));
    std::vector<uchar> row(std::size_t{300} * bytesPerPixel);
    QCOMPARE(jpeg.readRows(row.data(), 0, 5), 5);
    task.cancel();
    QCOMPARE(jpeg.readRows(row.data(), 0, 5), 0);
}

void DecodeCancellationTest::theDecompressorStopsBetweenScans() {
    JpegOptions options;
    options.isProgressive = true;
    options.isSubsampled = false;
    const FileURL photo = m_folder.write("photo.jpg", jpegFile(landscape(QSize(300, 200)), options));
    for (const int denominator : {1, 8}) {
        auto file = ReadOnlyFile::open(photo);
        const Task task;
        JpegDecompressor jpeg(*file, task);
        QVERIFY(jpeg.readHeader());
        task.cancel();
        QVERIFY(!jpeg.start(denominator, 300 / denominator));
    }
}

QTEST_GUILESS_MAIN(DecodeCancellationTest)
#include "DecodeCancellationTest.moc"
