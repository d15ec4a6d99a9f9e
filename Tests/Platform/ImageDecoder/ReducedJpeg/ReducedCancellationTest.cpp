#include "Platform/ImageDecoder/JpegDecompressor.h"
#include "Platform/ImageDecoder/ReducedJpeg/ReducedJpeg.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QTest>

using namespace Platform;

namespace {

EntropyDecoder::Cut smallCut() {
    return {.windowBytes = 500, .segmentBytes = 50, .valuesPerBand = 1000};
}

} // namespace

/// Counts what is still done once a task is cancelled.
class ReducedCancellationTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void littleIsReadOnceCancelled_data();
    void littleIsReadOnceCancelled();
    void noBandComesOnceCancelled();
    void noMoreRowsAreDecodedOnceCancelled();
    void noSegmentIsBegunOnceCancelled();

private:
    ScanData::Read readFrom() {
        return [this](std::span<uchar> buffer) {
            if (m_reads++ == m_cancelledAtRead) {
                m_task.cancel();
            }
            return m_jpeg->readData(buffer);
        };
    }

    TemporaryFolder m_folder;
    std::optional<Result<ReadOnlyFile>> m_file;
    std::optional<JpegDecompressor> m_jpeg;
    std::optional<JpegFrame> m_frame;
    std::optional<McuCodes> m_codes;
    Task m_task;
    int m_reads = 0;
    int m_cancelledAtRead = -1;
};

void ReducedCancellationTest::init() {
    m_file.emplace(ReadOnlyFile::open(m_folder.write("photo.jpg", jpegFile(landscape(QSize(640, 480))))));
    m_jpeg.emplace(**m_file, Task());
    QVERIFY(m_jpeg->readHeader());
    m_frame = m_jpeg->frame(8);
    m_codes = McuCodes::make(*m_frame);
    m_task = Task();
    m_reads = 0;
    m_cancelledAtRead = -1;
}

void ReducedCancellationTest::cleanup() {
    m_jpeg.reset();
    m_file.reset();
}

void ReducedCancellationTest::littleIsReadOnceCancelled_data() {
    QTest::addColumn<int>("cancelledAtRead");
    for (const int read : {0, 1, 2, 20}) {
        QTest::newRow("at read " + QByteArray::number(read)) << read;
    }
}

void ReducedCancellationTest::littleIsReadOnceCancelled() {
    QFETCH(int, cancelledAtRead);
    m_cancelledAtRead = cancelledAtRead;
    ThreadTeam team(2);
    EntropyDecoder decoder(*m_frame, *m_codes, readFrom(), team, m_task, smallCut());
    int rows = 0;
    for (auto band = decoder.next(); band.mcuRows > 0; band = decoder.next()) {
        rows += band.mcuRows;
    }
    QVERIFY(m_task.isCancelled());
    QVERIFY(rows < m_frame->mcuRows());
    QVERIFY(!decoder.isFinished());
    QVERIFY(m_reads <= cancelledAtRead + 2); // one more may be under way beside the search
}

void ReducedCancellationTest::noBandComesOnceCancelled() {
    ThreadTeam team(2);
    EntropyDecoder decoder(*m_frame, *m_codes, readFrom(), team, m_task, smallCut());
    QVERIFY(decoder.next().mcuRows > 0);
    QVERIFY(decoder.next().mcuRows > 0);
    m_task.cancel();
    const int reads = m_reads;
    QCOMPARE(decoder.next().mcuRows, 0);
    QCOMPARE(decoder.next().mcuRows, 0);
    QVERIFY(!decoder.isFinished());
    QVERIFY(m_reads <= reads + 2); // one for each of the calls
}

void ReducedCancellationTest::noMoreRowsAreDecodedOnceCancelled() {
    ThreadTeam team(2);
    ReducedJpeg rows(*m_frame, *m_codes, readFrom(), team, m_task, smallCut());
    std::vector<uchar> row(static_cast<std::size_t>(m_frame->scaledSize.width()) * bytesPerPixel);
    QCOMPARE(rows.readRows(row.data(), 0, 1), 1);
    m_task.cancel();
    const int rowsOfABand = m_frame->maximumVerticalFactor() * m_frame->scaledBlockSize;
    QVERIFY(rows.readRows(row.data(), 0, m_frame->scaledSize.height()) < rowsOfABand);
    QCOMPARE(rows.readRows(row.data(), 0, 1), 0);
    QVERIFY(!rows.isFinished());
}

void ReducedCancellationTest::noSegmentIsBegunOnceCancelled() {
    ScanData data(readFrom());
    data.stage(10000);
    data.advance(0);
    std::vector<ScanSegment> segments;
    for (quint64 begin = 0; begin < 80000; begin += 800) {
        segments.push_back({begin, begin + 800, {}, 0, {}});
    }
    const BlockScanner scanner(*m_codes, 0);
    m_task.cancel();
    std::atomic<int> next = 0;
    scanner.scan(data.window(), segments, next, m_task);
    for (const ScanSegment& segment : segments) {
        QVERIFY(segment.starts.empty());
    }
}

QTEST_APPLESS_MAIN(ReducedCancellationTest)
#include "ReducedCancellationTest.moc"
