#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Platform/ImageDecoder/PhotoRendering.h"
#include "Tests/Support/ProcessCost.h"
#include "Tests/Support/Sanitizers.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QTest>

using Platform::decodeImage;
using Platform::FileURL;

/// Runs over a collection of real and of damaged photos, where it lies beside the checkout; its manifest says
/// of each file what it is and what a viewer must do with it.
class PhotoCollectionTest : public QObject {
    Q_OBJECT

private slots:
    void theManifestNamesEveryPhoto();
    void everyPhotoIsShownInItsSizeOrNotAtAll_data();
    void everyPhotoIsShownInItsSizeOrNotAtAll(); // within bounds of time and memory

private:
    const QDir m_folder{QStringLiteral(PHOTO_COLLECTION)};
};

namespace {

enum Expectation {
    Shown,
    NotShown,
    ShownOrNot, // of another format, or too large: as the machine's plugins and memory allow
};

const QString manifestName = QStringLiteral("MANIFEST.tsv");

using Entry = QHash<QByteArray, QByteArray>;

QList<Entry> readManifest(QFile& manifest) {
    QList<Entry> entries;
    const QList<QByteArray> columns = manifest.readLine().trimmed().split('\t');
    while (!manifest.atEnd()) {
        const QList<QByteArray> values = manifest.readLine().split('\t');
        Entry entry;
        for (qsizetype i = 0; i < std::min(columns.size(), values.size()); ++i) {
            entry.insert(columns[i], values[i].trimmed());
        }
        entries.append(entry);
    }
    return entries;
}

Expectation expectation(const Entry& entry) {
    const QByteArray duty = entry["what-a-viewer-must-do"];
    const auto faultIsBehindThePicture = [&] {
        // The reference decoder fails on what follows the last row, or the scans that a small picture takes, and then
        // shows nothing of it.
        static const QByteArrayList faults{"two SOF markers", "Bogus DQT index", "Bogus marker length",
            "Bogus DAC index", "Unsupported marker type 0x9b", "Bogus DHT index 99"};
        return std::ranges::any_of(faults, [&](const QByteArray& fault) { return duty.contains(fault); });
    };
    if (duty.contains("wrong ending") || duty.contains("refused quickly") ||
        duty.contains("refuse quickly") || duty.contains("libjpeg-turbo 3 may show it") ||
        (duty.startsWith("cannot") && faultIsBehindThePicture())) {
        return ShownOrNot;
    }
    const bool isNotShown =
        duty.startsWith("cannot") || duty.startsWith("not a JPEG") || duty.startsWith("zero bytes");
    return isNotShown ? NotShown : Shown;
}

constexpr std::chrono::seconds maximumTime{5}; // of all processors together

/// Whether a picture is complete only when all of its file has been read.
bool needsAllCoefficients(const Entry& entry) {
    return entry["process"].contains("progressive") || entry["scans"].toInt() > 1;
}

qint64 pixels(QSize size) {
    return static_cast<qint64>(size.width()) * size.height();
}

/// Bytes that a decode may take.
///
/// @param shown  size of the picture that is made, with its halves
/// @param kept   size of the stored picture where all of its coefficients are in memory at once; else nothing
qint64 maximumMemory(QSize shown, QSize kept) {
    constexpr qint64 working = qint64{48} << 20;
    constexpr int coefficientBytes = 2 * 3; // of a pixel
    return working + pixels(shown) * 4 * 4 / 3 + pixels(kept) * coefficientBytes;
}

} // namespace

void PhotoCollectionTest::theManifestNamesEveryPhoto() {
    QFile manifest(m_folder.filePath(manifestName));
    if (!manifest.open(QIODevice::ReadOnly)) {
        QSKIP("there is no collection of photos beside the checkout");
    }
    QStringList named{manifestName, QStringLiteral("README.md")};
    for (const Entry& entry : readManifest(manifest)) {
        named.append(QString::fromUtf8(entry["file"]));
    }
    QStringList there;
    QDirIterator files(m_folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        there.append(m_folder.relativeFilePath(files.next()));
    }
    named.sort();
    there.sort();
    QCOMPARE(there, named);
}

void PhotoCollectionTest::everyPhotoIsShownInItsSizeOrNotAtAll_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("needsAllCoefficients");
    QTest::addColumn<int>("expected");
    QFile manifest(m_folder.filePath(manifestName));
    if (!manifest.open(QIODevice::ReadOnly)) {
        QSKIP("there is no collection of photos beside the checkout");
    }
    for (const Entry& entry : readManifest(manifest)) {
        QSize size(entry["width"].toInt(), entry["height"].toInt());
        const int orientation = entry["stored-orientation"].toInt();
        if (orientation >= 5 && orientation <= 8) {
            size.transpose();
        }
        QTest::newRow(entry["file"].constData())
            << QString::fromUtf8(entry["file"]) << size << needsAllCoefficients(entry)
            << static_cast<int>(expectation(entry));
    }
}

void PhotoCollectionTest::everyPhotoIsShownInItsSizeOrNotAtAll() {
    QFETCH(QString, name);
    QFETCH(QSize, size);
    QFETCH(bool, needsAllCoefficients);
    QFETCH(int, expected);
    const FileURL photo(std::filesystem::path(QFile::encodeName(m_folder.filePath(name)).toStdString()));
    for (const int maxPixelSize : {200, 1200, 2400, 0}) {
        const ProcessCost cost;
        const auto image = decodeImage(photo, maxPixelSize);
        const QSize shown = image ? image->pixels().size() : QSize();
        QVERIFY2(isThreadSanitized || cost.processorTime() < maximumTime,
            qPrintable(QString::number(cost.processorTime().count())));
        QVERIFY2(isSanitized || cost.memory() < maximumMemory(shown, needsAllCoefficients ? size : QSize()),
            qPrintable(QString::number(cost.memory())));
        if (expected != ShownOrNot) {
            QVERIFY2(bool(image) == (expected == Shown),
                image ? "shown" : qPrintable(image.error().localizedDescription()));
        }
        if (image && !size.isEmpty()) {
            QCOMPARE(shown, Platform::fittedSize(size, maxPixelSize));
        }
    }
}

QTEST_GUILESS_MAIN(PhotoCollectionTest)
#include "PhotoCollectionTest.moc"
