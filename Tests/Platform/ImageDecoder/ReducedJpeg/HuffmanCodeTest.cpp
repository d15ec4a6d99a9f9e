#include "Platform/ImageDecoder/ReducedJpeg/HuffmanCode.h"

#include <QTest>

#include <numeric>

using Platform::HuffmanCode;
using Platform::HuffmanSpecification;

namespace {

constexpr int largestSymbol = 255;

/// Symbols that count up from 0.
HuffmanSpecification specification(const std::array<quint8, 16>& counts) {
    HuffmanSpecification result;
    result.counts = counts;
    std::iota(result.symbols.begin(), result.symbols.end(), quint8{0});
    return result;
}

} // namespace

class HuffmanCodeTest : public QObject {
    Q_OBJECT

private slots:
    void aCodeIsFoundWhateverFollows_data();
    void aCodeIsFoundWhateverFollows();
    void whatIsNoCodeHasNoLength();
    void onlyShortCodesAreInTheShortTable();
    void impossibleCodesAreRefused_data();
    void impossibleCodesAreRefused();
    void symbolsWithoutMeaningAreRefused();
    void anEmptyCodeHasNoCodes();
};

void HuffmanCodeTest::aCodeIsFoundWhateverFollows_data() {
    QTest::addColumn<quint32>("bits");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("symbol");
    // One code of each length: 0, 10, 110 and so on.
    for (int length = 1; length <= 16; ++length) {
        const quint32 code = 0xffff0000U >> (length - 1) & 0xffff;
        const quint32 rest = 0xffffU >> length;
        const QByteArray name = QByteArray::number(length) + " bits";
        QTest::newRow(name + " and zeros") << code << length << length - 1;
        QTest::newRow(name + " and ones") << (code | rest) << length << length - 1;
        QTest::newRow(name + " and both") << (code | (rest & 0x5a5a)) << length << length - 1;
    }
}

void HuffmanCodeTest::aCodeIsFoundWhateverFollows() {
    QFETCH(quint32, bits);
    QFETCH(int, length);
    QFETCH(int, symbol);
    const auto code =
        HuffmanCode::make(specification({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}), largestSymbol);
    QVERIFY(code);
    const bool isAllOnes = bits == 0xffff; // which is not a code
    QCOMPARE(int(code->lookUp(bits).length), isAllOnes ? 0 : length);
    QCOMPARE(int(code->lookUp(bits).symbol), isAllOnes ? 0 : symbol);
}

void HuffmanCodeTest::whatIsNoCodeHasNoLength() {
    const auto code =
        HuffmanCode::make(specification({0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3}), largestSymbol);
    QVERIFY(code);
    QCOMPARE(int(code->lookUp(0x3fff).length), 2);
    QCOMPARE(int(code->lookUp(0x4000).length), 16);
    QCOMPARE(int(code->lookUp(0x4000).symbol), 1);
    QCOMPARE(int(code->lookUp(0x4002).symbol), 3);
    QCOMPARE(int(code->lookUp(0x4003).length), 0);
    QCOMPARE(int(code->lookUp(0xffff).length), 0);
}

void HuffmanCodeTest::onlyShortCodesAreInTheShortTable() {
    const auto code =
        HuffmanCode::make(specification({1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 1}), largestSymbol);
    QVERIFY(code);
    QCOMPARE(int(code->lookUpShort(0x7ff).length), 1);
    QCOMPARE(int(code->lookUpShort(0x800).length), 12);
    QCOMPARE(int(code->lookUpShort(0x801).length), 0);
    QCOMPARE(int(code->lookUp(0x8010).length), 13);
    QCOMPARE(int(code->lookUp(0x8018).length), 16);
}

void HuffmanCodeTest::impossibleCodesAreRefused_data() {
    QTest::addColumn<std::array<quint8, 16>>("counts");
    using Counts = std::array<quint8, 16>;
    QTest::newRow("all ones of one bit") << Counts{2};
    QTest::newRow("all ones of three bits") << Counts{1, 1, 2};
    QTest::newRow("more than there are") << Counts{1, 3};
    QTest::newRow("nothing left for the longer") << Counts{2, 1};
    QTest::newRow("all ones of sixteen bits") << Counts{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2};
    QTest::newRow("too many symbols") << Counts{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 255};
}

void HuffmanCodeTest::impossibleCodesAreRefused() {
    using Counts = std::array<quint8, 16>;
    QFETCH(Counts, counts);
    QVERIFY(!HuffmanCode::make(specification(counts), largestSymbol));
}

void HuffmanCodeTest::symbolsWithoutMeaningAreRefused() {
    HuffmanSpecification sixteen = specification({0, 0, 0, 0, 16});
    QVERIFY(HuffmanCode::make(sixteen, 15));
    sixteen.symbols[3] = 16;
    QVERIFY(!HuffmanCode::make(sixteen, 15));
    QVERIFY(HuffmanCode::make(sixteen, largestSymbol));
}

void HuffmanCodeTest::anEmptyCodeHasNoCodes() {
    const auto code = HuffmanCode::make(specification({}), largestSymbol);
    QVERIFY(code);
    QCOMPARE(int(code->lookUp(0).length), 0);
    QCOMPARE(int(code->lookUp(0xffff).length), 0);
}

QTEST_APPLESS_MAIN(HuffmanCodeTest)
#include "HuffmanCodeTest.moc"
