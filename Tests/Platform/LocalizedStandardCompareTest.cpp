#include "Platform/LocalizedStandardCompare.h"

#include <QTest>

#include <algorithm>
#include <clocale>
#include <numeric>

using Platform::collationLocale;
using Platform::localizedStandardCompare;
using Platform::localizedStandardOrder;

namespace {

using Names = std::vector<std::string>;

const std::string common; // the rules common to all languages

Names sorted(const Names& names, const std::string& locale) {
    Names result;
    for (const std::size_t index : localizedStandardOrder(names, locale)) {
        result.push_back(names[index]);
    }
    return result;
}

bool isBefore(std::string_view a, std::string_view b, const std::string& locale = common) {
    return std::is_lt(localizedStandardCompare(a, b, locale)) &&
           std::is_gt(localizedStandardCompare(b, a, locale));
}

bool isEqual(std::string_view a, std::string_view b, const std::string& locale = common) {
    return std::is_eq(localizedStandardCompare(a, b, locale)) &&
           std::is_eq(localizedStandardCompare(b, a, locale));
}

/// The process's own order of names set to another locale, to the end of the scope.
class ProcessLocale {
public:
    explicit ProcessLocale(const char* name) { setlocale(LC_COLLATE, name); }
    ~ProcessLocale() { setlocale(LC_COLLATE, m_before.c_str()); }

private:
    const std::string m_before = setlocale(LC_COLLATE, nullptr);
};

} // namespace

class LocalizedStandardCompareTest : public QObject {
    Q_OBJECT

private slots:
    void digitsCountByTheirValue() {
        QVERIFY(isBefore("IMG_2.jpg", "IMG_10.jpg"));
        QVERIFY(isBefore("2", "10"));
        QVERIFY(isBefore("a9b10", "a10b2"));
        QVERIFY(isEqual("IMG_002.jpg", "IMG_2.jpg"));
    }

    void longRunsOfDigitsCountByTheirValue() {
        const std::string nines(40, '9');
        const std::string thousand = "1" + std::string(40, '0');
        QVERIFY(isBefore(nines + ".jpg", thousand + ".jpg"));
        QVERIFY(isBefore("2" + std::string(99, '0'), "10" + std::string(99, '0')));
    }

    void caseDoesNotCount() {
        QVERIFY(isEqual("img_1.JPG", "IMG_1.jpg"));
        QVERIFY(isBefore("a", "B"));
        QVERIFY(isBefore("A", "b"));
        QVERIFY(isEqual("Ä", "ä"));
    }

    void accentsCountAfterLetters() {
        QVERIFY(isBefore("a", "ä"));
        QVERIFY(isBefore("ä1", "a2"));
        QVERIFY(isBefore("ä", "b"));
    }

    void eachLanguageHasItsRules() {
        QVERIFY(isBefore("ä", "z", "de"));
        QVERIFY(isBefore("z", "ä", "sv"));
        QVERIFY(isBefore("北京", "上海", "zh")); // by sound: běijīng, shànghǎi
        QVERIFY(isBefore("上海", "北京"));       // by the table of characters
    }

    void chineseNamesCountTheirNumbersToo() {
        QVERIFY(isBefore("照片2.jpg", "照片10.jpg"));
        QVERIFY(isBefore("照片2.jpg", "照片10.jpg", "zh"));
    }

    void anUnknownLocaleHasTheCommonRules() {
        QVERIFY(isBefore("IMG_2", "IMG_10", "xx_YY"));
        QVERIFY(isBefore("IMG_2", "IMG_10",
            "no such locale, and a name that is far too long for one" + std::string(500, 'x')));
        QVERIFY(isEqual("a", "A", "xx_YY"));
    }

    void bytesThatAreNotUtf8HaveAPlaceToo() {
        QVERIFY(isEqual("\xe4.jpg", "\xf6.jpg"));
        QVERIFY(isEqual("\xe4.jpg", "\ufffd.jpg"));
        QVERIFY(isBefore("\xe4"
                         "2.jpg",
            "\xe4"
            "10.jpg"));
        QVERIFY(isBefore("a.jpg", "\xe4.jpg"));
        const std::string noText("\xff\xfe\x00\x80", 4);
        const Names names = {"\xe4.jpg", "b.jpg", noText, "", "a.jpg"};
        const Names result = sorted(names, common);
        QVERIFY(std::ranges::is_permutation(result, names));
        QCOMPARE(Names(result.begin(), result.begin() + 3), (Names{"", "a.jpg", "b.jpg"}));
    }

    void namesThatCompareEqualKeepTheirOrder() {
        const Names names = {"b.JPG", "A.jpg", "B.jpg", "a.JPG", "b.jpg", "a.jpg"};
        const std::vector<std::size_t> expected = {1, 3, 5, 0, 2, 4};
        QCOMPARE(localizedStandardOrder(names, common), expected);
        Names same(5000, "IMG_1.jpg");
        std::vector<std::size_t> order(same.size());
        std::iota(order.begin(), order.end(), 0);
        QCOMPARE(localizedStandardOrder(same, common), order);
    }

    void theOrderIsThatOfTheComparison_data() {
        QTest::addColumn<QByteArray>("locale");
        for (const char* locale : {"", "de", "sv", "zh", "ja", "th", "da"}) {
            QTest::newRow(*locale ? locale : "common") << QByteArray(locale);
        }
    }

    void theOrderIsThatOfTheComparison() {
        QFETCH(QByteArray, locale);
        const std::string long255(255, 'x');
        const Names names =
            sorted({"IMG_10", "img_9", "IMG-9", "IMG 9", "ä", "a", "Z", "照片", "ß", "ss", "\xe4", "\xe4\xf6",
                       "é", "e\u0301", long255, long255 + "1", "1", "01", "a\nb", ""},
                locale.toStdString());
        for (std::size_t later = 0; later < names.size(); ++later) {
            for (std::size_t earlier = 0; earlier < later; ++earlier) {
                QVERIFY2(std::is_lteq(
                             localizedStandardCompare(names[earlier], names[later], locale.toStdString())),
                    (names[earlier] + " | " + names[later]).c_str());
            }
        }
    }

    void longNamesCountToTheirEnd() {
        const std::string start(240, 'x');
        QCOMPARE(localizedStandardOrder({start + "c", start + "b", start + "a"}, common),
            (std::vector<std::size_t>{2, 1, 0}));
    }

    void noNamesHaveNoOrder() { QVERIFY(localizedStandardOrder({}, common).empty()); }

    void theLocaleOfNoLanguageHasTheCommonRules_data() {
        QTest::addColumn<QByteArray>("posix");
        for (const char* name : {"C", "POSIX", "C.UTF-8", "C.utf8", "POSIX@x", ""}) {
            QTest::newRow(*name ? name : "empty") << QByteArray(name);
        }
    }

    void theLocaleOfNoLanguageHasTheCommonRules() {
        QFETCH(QByteArray, posix);
        QCOMPARE(collationLocale(posix.toStdString()), std::string());
    }

    void theLocaleOfALanguageHasItsRules() {
        QCOMPARE(collationLocale("sv_SE.UTF-8"), std::string("sv_SE"));
        QCOMPARE(collationLocale("zh_CN"), std::string("zh_CN"));
        QVERIFY(isBefore("z", "ä", collationLocale("sv_SE.UTF-8")));
        QVERIFY(isBefore("z", "ä", collationLocale("sv_SE.ISO-8859-1")));
        QVERIFY(isBefore("ä", "z", collationLocale("de_DE.UTF-8@euro")));
    }

    void theOrderIsNaturalInAProcessWithoutALanguage() {
        for (const char* name : {"C", "C.UTF-8"}) {
            const ProcessLocale locale(name);
            QCOMPARE(collationLocale(), std::string());
            QVERIFY(std::is_lt(localizedStandardCompare("img_2.jpg", "IMG_10.jpg")));
            QVERIFY(std::is_lt(localizedStandardCompare("a", "B")));
            QCOMPARE(
                localizedStandardOrder({"IMG_10", "img_2", "IMG_1"}), (std::vector<std::size_t>{2, 1, 0}));
        }
    }

    void theOrderIsNaturalInWhateverLocaleTheTestRuns() {
        QCOMPARE(localizedStandardOrder({"IMG_10.JPG", "IMG_2.jpeg", "IMG_1.jpg"}),
            (std::vector<std::size_t>{2, 1, 0}));
    }
};

QTEST_GUILESS_MAIN(LocalizedStandardCompareTest)
#include "LocalizedStandardCompareTest.moc"
