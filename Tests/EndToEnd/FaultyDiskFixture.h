#pragma once

#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/Faults/FaultyDisk.h"

#include <optional>
#include <string>

/// Sessions with photos on a disk on which things go wrong. Each test has a fresh one.
class FaultyDiskFixture : public SessionFixture {
    Q_OBJECT

protected slots:
    void initTestCase();
    void init();
    void cleanup();

protected:
    /// "10.jpg", "11.jpg"...
    static std::string nameOf(int index) { return std::to_string(10 + index) + ".jpg"; }

    /// Writes so many photos onto the disk: photo 0, photo 1...
    void writePhotos(int count, QSize size);

    /// Starts the application and opens the disk; false where the first photo does not come.
    bool startOnDisk();

    std::optional<FaultyDisk> m_disk;
};
