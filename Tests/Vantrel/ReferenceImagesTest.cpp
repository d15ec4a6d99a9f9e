#include "Tests/Support/PictureComparison.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tools/Screens/ScreenState.h"
#include "Tools/Screens/Stage.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QQmlProperty>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

namespace {

/// Out of 255: more is a change of the screen, less is how another version of the rasteriser smooths an edge. The changes
/// that the controls make come to 4.6 and more.
constexpr double visibleDifference = 3;

const QString references = QStringLiteral(REFERENCE_IMAGES);
const QString screenshots = QStringLiteral(SCREENSHOT_FOLDER);

/// A photograph of a few plain surfaces whose edges JPEG keeps as they are, so that pictures of it are small files.
QByteArray drawnPhotograph(const QColor& sky, const QColor& ground) {
    QImage picture(3008, 2000, QImage::Format_RGB32); // whole blocks of 16 pixels, as all below
    picture.fill(sky);
    QPainter painter(&picture);
    painter.fillRect(0, 1248, 3008, 752, ground);
    painter.fillRect(800, 1008, 640, 240, ground.lighter());
    painter.fillRect(2080, 400, 320, 320, ground.lighter());
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPG", 95);
    return bytes;
}

/// All that is drawn within an item, itself included, and is of that class.
std::vector<QQuickItem*> drawnWithin(QQuickItem& item, const char* className) {
    std::vector<QQuickItem*> items;
    if (item.isVisible() && item.inherits(className)) {
        items.push_back(&item);
    }
    for (QQuickItem* child : item.childItems()) {
        const auto within = drawnWithin(*child, className);
        items.insert(items.end(), within.begin(), within.end());
    }
    return items;
}

QColor changed(const QColor& color) {
    const auto moved = [](int level) { return level < 128 ? level + 12 : level - 12; };
    return {moved(color.red()), moved(color.green()), moved(color.blue()), color.alpha()};
}

constexpr auto panelNames = {
    "floatingLeftToolbar", "floatingRightToolbar", "floatingStatusBar", "floatingMoveRejected"};

} // namespace

/// The screen looks as the stored pictures show it; those are written anew where VANTREL_WRITE_REFERENCE_IMAGES is set.
/// Controls at the end see to it that the comparison can tell.
class ReferenceImagesTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { QTest::failOnWarning(QRegularExpression(".")); }

    void theScreenLooksAsItShould_data();
    void theScreenLooksAsItShould();

    void aPanelThatMovedByTwoPointsIsSeen();
    void aTextOfAnotherColourIsSeen();
    void aPanelOfAnotherColourIsSeen();
    void anEdgeThatIsSmoothedALittleOtherwiseIsForgiven();
    void picturesOfTwoSizesDiffer();

private:
    /// A state whose panels all show, with nothing disabled.
    ScreenState stateOfControls() const;
    /// What is wrong with the picture, which is kept for looking at it, with a picture of the difference.
    QString complaint(const QString& name, const QImage& found, const PictureDifference& difference) const;

    TemporaryFolder m_folder;
    std::vector<std::filesystem::path> m_photographs;
    std::vector<ScreenState> m_states;
};

void ReferenceImagesTest::initTestCase() {
    if (!QFileInfo::exists("/usr/share/fonts/truetype/dejavu")) {
        QSKIP("the package fonts-dejavu-core is not installed");
    }
    m_photographs = {m_folder.write("1.jpg", drawnPhotograph("#7fa3c7", "#3d5a45")).path(),
        m_folder.write("2.jpg", drawnPhotograph("#d9a066", "#5b3a52")).path(),
        m_folder.write("3.jpg", drawnPhotograph("#e8ecef", "#9aa7ad")).path()};
    m_states = screenStates(qGuiApp->devicePixelRatio());
    QVERIFY(!m_states.empty());
}

void ReferenceImagesTest::theScreenLooksAsItShould_data() {
    QTest::addColumn<int>("index");
    for (int index = 0; index < std::ssize(m_states); ++index) {
        QTest::newRow(qUtf8Printable(m_states[index].name)) << index;
    }
}

void ReferenceImagesTest::theScreenLooksAsItShould() {
    QFETCH(const int, index);
    const ScreenState& state = m_states[index];
    Stage stage(state.size, state.features, m_photographs);
    state.arrange(stage);
    const QImage found = stage.picture().convertToFormat(QImage::Format_RGB888);
    const QString reference = references + '/' + state.name + ".png";
    if (qEnvironmentVariableIsSet("VANTREL_WRITE_REFERENCE_IMAGES")) {
        QVERIFY(found.save(reference, "PNG", 0)); // 0: as small as it gets
        return;
    }
    const PictureDifference difference = differenceBetween(found, QImage(reference));
    if (difference.largest > visibleDifference) {
        QFAIL(qUtf8Printable(complaint(state.name, found, difference)));
    }
}

void ReferenceImagesTest::aPanelThatMovedByTwoPointsIsSeen() {
    const ScreenState state = stateOfControls();
    Stage stage(state.size, state.features, m_photographs);
    state.arrange(stage);
    const QImage before = stage.picture();
    for (const char* name : panelNames) {
        QQuickItem& panel = stage.item(name);
        for (const char* anchor : {"left", "right", "top", "bottom"}) {
            QQmlProperty(&panel, QStringLiteral("anchors.") + anchor).reset();
        }
        const QPointF place = panel.position();
        for (const QPointF way : {QPointF(2, 0), QPointF(0, -2)}) {
            panel.setPosition(place + way);
            const double difference = differenceBetween(before, stage.picture()).largest;
            QCOMPARE(panel.position(), place + way);
            QVERIFY2(difference > visibleDifference, name);
        }
        panel.setPosition(place);
    }
    QVERIFY(differenceBetween(before, stage.picture()).largest <= visibleDifference);
}

void ReferenceImagesTest::aTextOfAnotherColourIsSeen() {
    const ScreenState state = stateOfControls();
    Stage stage(state.size, state.features, m_photographs);
    state.arrange(stage);
    const QImage before = stage.picture();
    int count = 0;
    for (QQuickItem* text : drawnWithin(*stage.window().contentItem(), "QQuickText")) {
        const QString words = text->property("text").toString();
        if (words == "|") {
            continue; // too faint and thin to be read
        }
        const auto color = text->property("color").value<QColor>();
        text->setProperty("color", changed(color));
        const double difference = differenceBetween(before, stage.picture()).largest;
        text->setProperty("color", color);
        QVERIFY2(difference > visibleDifference, qUtf8Printable(words));
        ++count;
    }
    QVERIFY(count >= 10);
}

void ReferenceImagesTest::aPanelOfAnotherColourIsSeen() {
    const ScreenState state = stateOfControls();
    Stage stage(state.size, state.features, m_photographs);
    state.arrange(stage);
    const QImage before = stage.picture();
    for (const char* name : panelNames) {
        QQuickItem& panel = stage.item(name);
        const auto frames = drawnWithin(panel, "PanelFrame");
        QCOMPARE(frames.size(), std::size_t{1});
        const auto fill = frames.front()->property("fill").value<QColor>();
        frames.front()->setProperty("fill", changed(fill));
        const double difference = differenceBetween(before, stage.picture()).largest;
        frames.front()->setProperty("fill", fill);
        QVERIFY2(difference > visibleDifference, name);
    }
}

void ReferenceImagesTest::anEdgeThatIsSmoothedALittleOtherwiseIsForgiven() {
    const auto drawn = [](double shift) {
        QImage picture(400, 100, QImage::Format_RGB32);
        picture.fill(QColor(0x24, 0x24, 0x26));
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        QFont font;
        font.setPixelSize(13);
        QPainterPath text;
        text.addText(10 + shift, 40 + shift, font, "Move Approved (12)");
        painter.fillPath(text, QColor(0xeb, 0xeb, 0xeb));
        painter.drawEllipse(QPointF(300 + shift, 50 + shift), 30, 30);
        return picture;
    };
    const QImage picture = drawn(0);
    const double difference = differenceBetween(picture, drawn(1 / 32.)).largest;
    QVERIFY(picture != drawn(1 / 32.));
    QVERIFY(difference <= visibleDifference);
}

void ReferenceImagesTest::picturesOfTwoSizesDiffer() {
    QImage small(40, 30, QImage::Format_RGB32);
    QImage large(40, 31, QImage::Format_RGB32);
    small.fill(Qt::black);
    large.fill(Qt::black);
    QVERIFY(differenceBetween(small, large).largest > visibleDifference);
}

ScreenState ReferenceImagesTest::stateOfControls() const {
    const auto isFit = [](const ScreenState& state) {
        return state.name == "approved" || state.name == "4k";
    };
    return *std::ranges::find_if(m_states, isFit);
}

QString ReferenceImagesTest::complaint(
    const QString& name, const QImage& found, const PictureDifference& difference) const {
    QDir().mkpath(screenshots);
    const QString foundFile = screenshots + '/' + name + ".png";
    found.save(foundFile);
    if (difference.map.isNull()) {
        return QStringLiteral("there is no reference image of that size for %1").arg(foundFile);
    }
    const QString differenceFile = screenshots + '/' + name + "-difference.png";
    difference.map.save(differenceFile);
    return QStringLiteral("%1 differs by %2 at (%3, %4); where it does: %5")
        .arg(foundFile)
        .arg(difference.largest)
        .arg(difference.place.x())
        .arg(difference.place.y())
        .arg(differenceFile);
}

int main(int argc, char** argv) {
    qputenv("FONTCONFIG_FILE", REFERENCE_IMAGES "/fonts.conf"); // read when the application is made
    const QGuiApplication application(argc, argv);
    ReferenceImagesTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ReferenceImagesTest.moc"
