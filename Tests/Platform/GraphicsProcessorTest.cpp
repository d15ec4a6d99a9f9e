#include "Platform/GraphicsProcessor.h"

#include <QTest>

using Platform::isSoftwareRasteriser;

class GraphicsProcessorTest : public QObject {
    Q_OBJECT

private slots:
    void renderersThatComputeOnTheMainProcessorAreKnown_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("isSoftware");
        QTest::newRow("llvmpipe") << QByteArray("llvmpipe (LLVM 15.0.6, 256 bits)") << true;
        QTest::newRow("softpipe") << QByteArray("softpipe") << true;
        QTest::newRow("swrast") << QByteArray("Mesa DRI swrast") << true;
        QTest::newRow("old rasteriser") << QByteArray("Software Rasterizer") << true;
        QTest::newRow("through Vulkan")
            << QByteArray("ANGLE (Google, Vulkan 1.3.0 (SwiftShader Device))") << true;
        QTest::newRow("integrated") << QByteArray("Mesa Intel(R) UHD Graphics 620 (KBL GT2)") << false;
        QTest::newRow("card") << QByteArray("AMD Radeon RX 6600 (navi23, LLVM 15.0.6, DRM 3.49)") << false;
        QTest::newRow("of a virtual machine, with a real one behind") << QByteArray("virgl (NVE4)") << false;
    }
    void renderersThatComputeOnTheMainProcessorAreKnown() {
        QFETCH(QByteArray, name);
        QTEST(isSoftwareRasteriser(name), "isSoftware");
    }
};

QTEST_APPLESS_MAIN(GraphicsProcessorTest)
#include "GraphicsProcessorTest.moc"
