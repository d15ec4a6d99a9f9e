#include "Tests/Support/Pictures.h"
#include "Tests/Vantrel/DrawnCanvas.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTemporaryFile>
#include <QTest>

using Platform::Image;

/// A window that is moved from a screen of scale factor 1 to one of 2.
class ScreenChangeTest : public QObject {
    Q_OBJECT

private slots:
    void thePhotoIsDrawnAtTheDevicePixelsOfTheNewScreen() {
        QCOMPARE(QGuiApplication::screens().size(), 2);
        DrawnCanvas view;
        QImage stripes = plain({1600, 1200}, Qt::black);
        for (int x = 0; x < stripes.width(); x += 2) {
            for (int y = 0; y < stripes.height(); ++y) {
                stripes.setPixel(x, y, 0xffffffff);
            }
        }
        view.canvas->setImage(Image(stripes));
        QVERIFY(isNear(view.picture().pixelColor(401, 300), QColor(128, 128, 128), 40));
        view.window.setGeometry(2100, 50, 800, 600);
        view.window.setScreen(QGuiApplication::screens().last());
        QTRY_COMPARE(view.deviceScale(), 2.0);
        QTRY_COMPARE(view.picture().size(), QSize(1600, 1200));
        QTRY_VERIFY(greatestDifference(view.picture(), stripes, stripes.rect().adjusted(1, 1, -1, -1)) <= 8);
    }
};

int main(int argc, char** argv) {
    QTemporaryFile screens;
    screens.open();
    screens.write(R"({"synchronousWindowSystemEvents": false, "windowFrameMargins": false, "screens": [
        {"name": "a", "x": 0, "y": 0, "width": 2000, "height": 1500,
         "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
        {"name": "b", "x": 2000, "y": 0, "width": 2000, "height": 1500,
         "logicalDpi": 192, "logicalBaseDpi": 96, "dpr": 1}]})");
    screens.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toLocal8Bit());
    QGuiApplication application(argc, argv);
    ScreenChangeTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ScreenChangeTest.moc"
