#include "Platform/ImageDecoder/ReducedJpeg/ScanData.h"

#include <QByteArray>
#include <QTest>

#include <algorithm>

using Platform::ScanData;

namespace {

/// Gives bytes from memory.
ScanData::Read from(const QByteArray& bytes) {
    return [bytes, at = qsizetype{0}](std::span<uchar> buffer) mutable {
        const auto count = std::min<qsizetype>(std::ssize(buffer), bytes.size() - at);
        std::copy_n(bytes.constData() + at, count, buffer.begin());
        at += count;
        return static_cast<std::size_t>(count);
    };
}

QByteArray contentOf(const ScanData& data) {
    const std::span<const uchar> window = data.window();
    return QByteArray(reinterpret_cast<const char*>(window.data()), std::ssize(window));
}

/// A scan read to its end, or to where it breaks, so many bytes at a time.
ScanData read(const QByteArray& bytes, std::size_t atATime) {
    ScanData data(from(bytes));
    qsizetype staged = 0;
    for (; staged <= bytes.size() + static_cast<qsizetype>(atATime);
         staged += static_cast<qsizetype>(atATime)) {
        data.stage(atATime);
        data.advance(0);
    }
    return data;
}

QByteArray fromHex(const char* digits) {
    return QByteArray::fromHex(digits);
}

} // namespace

class ScanDataTest : public QObject {
    Q_OBJECT

private slots:
    void whatIsStuffedIsTakenOut_data();
    void whatIsStuffedIsTakenOut();
    void whatIsStagedIsNotYetInTheWindow();
    void whatIsConsumedIsDropped();
    void zerosFollowTheWindow();
    void restartsMoveWithTheWindow();
    void whatIsWrongIsBroken_data();
    void whatIsWrongIsBroken();
    void anErrorThatIsStagedIsNotYetOne();
    void nothingIsReadBehindTheEnd();
};

void ScanDataTest::whatIsStuffedIsTakenOut_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<std::vector<std::size_t>>("restarts");
    using Restarts = std::vector<std::size_t>;
    QTest::newRow("nothing") << fromHex("ffd9") << QByteArray() << Restarts{};
    QTest::newRow("plain") << fromHex("010203ffd9") << fromHex("010203") << Restarts{};
    QTest::newRow("stuffed zeros") << fromHex("ff0001ff00ff00ffd9") << fromHex("ff01ffff") << Restarts{};
    QTest::newRow("zeros that are not stuffed")
        << fromHex("0000ff000000ffd9") << fromHex("0000ff0000") << Restarts{};
    QTest::newRow("fill bytes before the end") << fromHex("01ffffffd9") << fromHex("01") << Restarts{};
    QTest::newRow("restarts") << fromHex("01ffd00203ffd1ff00ffd204ffd9") << fromHex("010203ff04")
                              << Restarts{1, 3, 4};
    QTest::newRow("fill bytes before a restart")
        << fromHex("01ffffd002ffd9") << fromHex("0102") << Restarts{1};
    QTest::newRow("restarts that count round")
        << fromHex("00ffd001ffd102ffd203ffd304ffd405ffd506ffd607ffd708ffd009ffd10affd9")
        << fromHex("000102030405060708090a") << Restarts{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    QTest::newRow("an empty interval") << fromHex("01ffd0ffd102ffd9") << fromHex("0102") << Restarts{1, 1};
    QTest::newRow("a restart at the end") << fromHex("01ffd0ffd9") << fromHex("01") << Restarts{1};
    QTest::newRow("more behind the end") << fromHex("01ffd9ffd0020304") << fromHex("01") << Restarts{};
}

void ScanDataTest::whatIsStuffedIsTakenOut() {
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, content);
    QFETCH(std::vector<std::size_t>, restarts);
    for (const std::size_t atATime : {1, 2, 3, 5, 100}) {
        const ScanData data = read(bytes, atATime);
        QCOMPARE(contentOf(data), content);
        QCOMPARE(data.restarts(), restarts);
        QCOMPARE(data.restartsBefore(), 0);
        QVERIFY(data.isComplete());
        QVERIFY(!data.isBroken());
    }
}

void ScanDataTest::whatIsStagedIsNotYetInTheWindow() {
    ScanData data(from(fromHex("0102ffd003ffd9")));
    data.stage(2);
    QVERIFY(data.window().empty());
    data.advance(0);
    QCOMPARE(contentOf(data), fromHex("0102"));
    data.stage(100);
    QCOMPARE(contentOf(data), fromHex("0102"));
    QVERIFY(data.restarts().empty());
    QVERIFY(!data.isComplete());
    data.advance(0);
    QCOMPARE(contentOf(data), fromHex("010203"));
    QVERIFY(data.isComplete());
}

void ScanDataTest::whatIsConsumedIsDropped() {
    ScanData data(from(fromHex("0102030405060708ffd9")));
    data.stage(4);
    data.advance(0);
    data.stage(2);
    data.advance(3);
    QCOMPARE(contentOf(data), fromHex("040506"));
    data.advance(3);
    QVERIFY(data.window().empty());
    QVERIFY(!data.isComplete());
    data.stage(100);
    data.advance(0);
    QCOMPARE(contentOf(data), fromHex("0708"));
    QVERIFY(data.isComplete());
}

void ScanDataTest::zerosFollowTheWindow() {
    ScanData data(from(QByteArray(1000, 'x') + fromHex("ffd9")));
    const auto hasPadding = [&] {
        const uchar* const end = data.window().data() + data.window().size();
        return std::all_of(end, end + ScanData::padding, [](uchar byte) { return byte == 0; });
    };
    data.stage(700);
    data.advance(0);
    QVERIFY(hasPadding());
    data.stage(1);
    data.advance(690); // the window is shorter than it was
    QCOMPARE(data.window().size(), std::size_t{11});
    QVERIFY(hasPadding());
    data.stage(1000);
    data.advance(11);
    QVERIFY(hasPadding());
}

void ScanDataTest::restartsMoveWithTheWindow() {
    using Restarts = std::vector<std::size_t>;
    ScanData data(from(fromHex("0001ffd00203ffd10405ffd20607ffd9")));
    data.stage(8); // up to the second marker
    data.advance(0);
    QCOMPARE(data.restarts(), (Restarts{2, 4}));
    data.stage(100);
    data.advance(3);
    QCOMPARE(data.restarts(), (Restarts{1, 3}));
    QCOMPARE(data.restartsBefore(), 1);
    data.advance(1); // a restart where the window begins is still of it
    QCOMPARE(data.restarts(), (Restarts{0, 2}));
    QCOMPARE(data.restartsBefore(), 1);
    data.advance(4);
    QVERIFY(data.restarts().empty());
    QCOMPARE(data.restartsBefore(), 3);
    QVERIFY(data.window().empty());
}

void ScanDataTest::whatIsWrongIsBroken_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing at all") << QByteArray() << QByteArray();
    QTest::newRow("an early end") << fromHex("010203") << fromHex("010203");
    QTest::newRow("an early end within a marker") << fromHex("0102ff") << fromHex("0102");
    QTest::newRow("another scan") << fromHex("01ffda0203ffd9") << fromHex("01");
    QTest::newRow("tables") << fromHex("01ffc40203ffd9") << fromHex("01");
    QTest::newRow("a first restart of another number") << fromHex("01ffd102ffd9") << fromHex("01");
    QTest::newRow("a restart left out") << fromHex("01ffd002ffd203ffd9") << fromHex("0102");
    QTest::newRow("a restart twice") << fromHex("01ffd002ffd003ffd9") << fromHex("0102");
    QTest::newRow("a marker of no meaning") << fromHex("01ff0102ffd9") << fromHex("01");
}

void ScanDataTest::whatIsWrongIsBroken() {
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, content);
    for (const std::size_t atATime : {1, 2, 3, 100}) {
        const ScanData data = read(bytes, atATime);
        QCOMPARE(contentOf(data), content);
        QVERIFY(data.isBroken());
        QVERIFY(!data.isComplete());
    }
}

void ScanDataTest::anErrorThatIsStagedIsNotYetOne() {
    ScanData data(from(fromHex("0102ffda")));
    data.stage(2);
    data.advance(0);
    data.stage(2);
    QVERIFY(!data.isBroken());
    data.advance(0);
    QVERIFY(data.isBroken());
}

void ScanDataTest::nothingIsReadBehindTheEnd() {
    for (const char* const bytes : {"01ffd902030405", "01ffda02030405"}) {
        qsizetype given = 0;
        ScanData data([&, read = from(fromHex(bytes))](std::span<uchar> buffer) mutable {
            const std::size_t count = read(buffer);
            given += static_cast<qsizetype>(count);
            return count;
        });
        for (int i = 0; i < 10; ++i) {
            data.stage(1);
            data.advance(0);
        }
        QCOMPARE(given, qsizetype{3});
    }
}

QTEST_APPLESS_MAIN(ScanDataTest)
#include "ScanDataTest.moc"
