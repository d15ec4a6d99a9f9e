#include <QFont>
#include <QGlyphRun>
#include <QTest>
#include <QTextLayout>

#include <algorithm>

namespace {

/// Whether the system has a glyph for every character of the text, in that family or in one that stands in for it.
bool canBeShown(const QString& text, const QString& family) {
    QFont font;
    if (!family.isEmpty()) {
        font.setFamily(family);
    }
    QTextLayout layout(text, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    static constexpr quint32 missing = 0;
    return !runs.isEmpty() && std::ranges::none_of(runs,
                                  [](const QGlyphRun& run) { return run.glyphIndexes().contains(missing); });
}

} // namespace

/// The fonts that the README names show what the screen has to show.
class FontsTest : public QObject {
    Q_OBJECT

private slots:
    void everyFileNameCanBeShown_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("Latin") << QStringLiteral("Übung_ñandú_Žižkov_İstanbul_Tiếng Việt.JPG");
        QTest::newRow("Greek") << QStringLiteral("Φωτογραφία_ΑΒΓ_0001.jpg");
        QTest::newRow("Cyrillic") << QStringLiteral("Фотография_їжак_0001.jpg");
        QTest::newRow("Chinese, simplified") << QStringLiteral("北京照片编号.jpg");
        QTest::newRow("Chinese, traditional") << QStringLiteral("臺灣相簿編號.jpg");
        QTest::newRow("Japanese") << QStringLiteral("写真カメラのアルバム.jpg");
        QTest::newRow("Korean") << QStringLiteral("서울사진앨범.jpg");
        QTest::newRow("the command key") << QStringLiteral("⌘O");
    }
    void everyFileNameCanBeShown() {
        QFETCH(QString, name);
        for (const QString& family : {QString(), QStringLiteral("monospace")}) {
            QVERIFY2(canBeShown(name, family), qPrintable(family));
        }
    }

    void aCharacterThatNoFontHasIsNoticed() { QVERIFY(!canBeShown(QStringLiteral(u"a\U0003fffdb"), {})); }
};

QTEST_MAIN(FontsTest)
#include "FontsTest.moc"
