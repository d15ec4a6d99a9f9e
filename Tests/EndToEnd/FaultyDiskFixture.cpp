#include "Tests/EndToEnd/FaultyDiskFixture.h"

#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

void FaultyDiskFixture::initTestCase() {
    if (const QString lacking = FaultyDisk::lacking(); !lacking.isEmpty()) {
        QSKIP(qPrintable(lacking));
    }
    SessionFixture::initTestCase();
}

void FaultyDiskFixture::init() {
    SessionFixture::init();
    m_disk.emplace();
}

void FaultyDiskFixture::cleanup() {
    SessionFixture::cleanup();
    m_disk.reset();
}

void FaultyDiskFixture::writePhotos(int count, QSize size) {
    for (int index = 0; index < count; ++index) {
        m_disk->files().write(nameOf(index), flatPhoto(readablePhotoColor(index % readablePhotoCount), size));
    }
}

bool FaultyDiskFixture::startOnDisk() {
    return start() && openFolder(m_disk->url()) &&
           QTest::qWaitFor([&] { return seenIn(m_application->picture()) == u"photo 0"; }, patience);
}
