#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/PictureComparison.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/ProcessCost.h"
#include "Tests/Support/Sanitizers.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WithoutPrivileges.h"

#include <QBuffer>
#include <QTest>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

using Platform::decodeImage;
using Platform::FileURL;

class UnreadablePhotoTest : public QObject {
    Q_OBJECT

private slots:
    void aTruncatedPhotoShowsThePartThatIsThere_data();
    void aTruncatedPhotoShowsThePartThatIsThere();
    void aPhotoThatEndsInItsHeaderIsAnError();
    void damageInTheMiddleStillShowsTheRest();
    void bytesAfterTheEndAreIgnored();
    void damagedExifDataAreIgnored();
    void anArithmeticCodedPhotoIsShown();
    void aProgressivePhotoIsShown();
    void zeroBytesAreAnError();
    void whatIsNoPictureIsAnErrorThatNamesTheFile();
    void aFolderIsAnError();
    void aDanglingLinkIsAnError();
    void aLinkToAPhotoIsThatPhoto();
    void aPipeIsAnErrorAtOnce();
    void aDeviceIsAnErrorAtOnce();
    void aVanishedPhotoIsAnError();
    void aPhotoWithoutPermissionIsAnError();
    void aDiskThatFailsIsAnError();
    void aNameInLatin1IsOpened();
    void aNameWithALineFeedIsOpened();
    void aNameOf255BytesIsOpened();
    void moreSidePixelsThanTheFormatAllowsAreRefused();
    void tooManyPixelsAreRefused();
    void tooMuchMemoryForAProgressivePhotoIsRefused();
    void aLargeHeaderIsReadButNotAnEndlessOne();
    void nothingIsReadThatIsFarBehindThePhoto();
    void lackOfMemoryIsAnError_data();
    void lackOfMemoryIsAnError();
    void manyScansAreShownButNotThousands_data();
    void manyScansAreShownButNotThousands();

private:
    FileURL write(const QByteArray& content) const { return m_folder.write("photo.jpg", content); }

    TemporaryFolder m_folder;
};

namespace {

// What is damaged is decoded by the library, which rounds a little otherwise.
constexpr double aLevel = 1.5;

/// Whether so little was spent that the photo was refused before it was decoded.
bool isRefusal(const ProcessCost& cost) {
    constexpr std::chrono::milliseconds littleTime{500};
    constexpr qint64 littleMemory = qint64{16} << 20;
    return cost.processorTime() < littleTime && (isSanitized || cost.memory() < littleMemory);
}

/// While it lives, the process gets no more memory than so many bytes.
class ScarceMemory {
public:
    explicit ScarceMemory(rlim_t bytes) {
        getrlimit(RLIMIT_AS, &m_before);
        const rlim_t present = addressSpace();
        allow(present);
        for (std::size_t size = std::size_t{1} << 20; size >= leastPiece; size /= 2) {
            while (void* const piece = std::malloc(size)) { // what the heap keeps for later
                *static_cast<void**>(piece) = std::exchange(m_hoard, piece);
            }
        }
        allow(present + bytes);
    }
    ~ScarceMemory() {
        setrlimit(RLIMIT_AS, &m_before);
        while (m_hoard) {
            std::free(std::exchange(m_hoard, *static_cast<void**>(m_hoard)));
        }
    }
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;

private:
    static constexpr std::size_t leastPiece = 4096;

    static rlim_t addressSpace() {
        std::ifstream file("/proc/self/statm");
        rlim_t pages = 0;
        file >> pages;
        return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
    }

    void allow(rlim_t bytes) const {
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_AS, &limit);
    }

    rlimit m_before{};
    void* m_hoard = nullptr; ///< the last piece, which begins with the address of the one before
};

/// Until it shows; an exception ends the process.
///
/// @return how often it did not
int decodeWithEverMoreMemory(const FileURL& photo, int maxPixelSize) noexcept {
    constexpr rlim_t step = rlim_t{512} << 10;
    rlim_t memory = step; // for the words of the error
    for (int refusals = 0;; ++refusals, memory += step) {
        const ScarceMemory scarce(memory);
        if (decodeImage(photo, maxPixelSize)) {
            return refusals;
        }
    }
}

/// The file with its second scan repeated.
QByteArray withRepeatedScan(const QByteArray& progressive, int times) {
    const QByteArray startOfScan("\xff\xda", 2);
    const qsizetype first = progressive.indexOf(startOfScan);
    const qsizetype scan = progressive.indexOf(startOfScan, first + 1);
    const qsizetype end = progressive.indexOf(startOfScan, scan + 1);
    return progressive.left(scan) + progressive.mid(scan, end - scan).repeated(times) + progressive.mid(end);
}

} // namespace

void UnreadablePhotoTest::aTruncatedPhotoShowsThePartThatIsThere_data() {
    QTest::addColumn<int>("maxPixelSize");
    for (const int maxPixelSize : {0, 600, 200}) {
        QTest::addRow("%d", maxPixelSize) << maxPixelSize;
    }
}

void UnreadablePhotoTest::aTruncatedPhotoShowsThePartThatIsThere() {
    QFETCH(int, maxPixelSize);
    const QByteArray file = jpegFile(landscape(QSize(1600, 1200)));
    const auto whole = decodeImage(write(file), maxPixelSize);
    const auto part = decodeImage(write(file.left(file.size() / 2)), maxPixelSize);
    QVERIFY(part);
    QCOMPARE(part->pixels().size(), whole->pixels().size());
    const QRect upperThird(0, 0, part->pixels().width(), part->pixels().height() / 3);
    QVERIFY(differenceBetween(part->pixels().copy(upperThird), whole->pixels().copy(upperThird)).largest <
            aLevel);
}

void UnreadablePhotoTest::aPhotoThatEndsInItsHeaderIsAnError() {
    const QByteArray file = jpegFile(landscape(QSize(64, 64)));
    for (const int length : {1, 2, 3, 20, 100}) {
        QVERIFY(!decodeImage(write(file.left(length)), 0));
    }
}

void UnreadablePhotoTest::damageInTheMiddleStillShowsTheRest() {
    QByteArray file = jpegFile(landscape(QSize(1600, 1200)));
    const auto whole = decodeImage(write(file), 200);
    file.replace(file.size() / 2, 500, QByteArray(500, '\x55'));
    const auto damaged = decodeImage(write(file), 200);
    QVERIFY(damaged);
    const QRect upperThird(0, 0, 200, 50);
    QVERIFY(differenceBetween(damaged->pixels().copy(upperThird), whole->pixels().copy(upperThird)).largest <
            aLevel);
}

void UnreadablePhotoTest::bytesAfterTheEndAreIgnored() {
    const QByteArray file = jpegFile(landscape(QSize(64, 64)));
    const auto alone = decodeImage(write(file), 0);
    const auto followed = decodeImage(write(file + jpegFile(plain(QSize(64, 64), Qt::red))), 0);
    QCOMPARE(followed->pixels(), alone->pixels());
}

void UnreadablePhotoTest::damagedExifDataAreIgnored() {
    JpegOptions options;
    options.orientation = 6;
    QByteArray file = jpegFile(quadrants(QSize(64, 32)), options);
    const qsizetype exif = file.indexOf("Exif");
    file.replace(exif + 10, 4, "\xff\xff\xff\xff", 4); // where the first directory should be
    QCOMPARE(decodeImage(write(file), 0)->pixels().size(), QSize(64, 32));
}

void UnreadablePhotoTest::anArithmeticCodedPhotoIsShown() {
    JpegOptions options;
    options.isArithmetic = true;
    const QImage picture = landscape(QSize(320, 240));
    const auto image = decodeImage(write(jpegFile(picture, options)), 0);
    QVERIFY(image);
    QVERIFY(meanDifference(image->pixels(), picture) < 4);
}

void UnreadablePhotoTest::aProgressivePhotoIsShown() {
    JpegOptions options;
    options.isProgressive = true;
    const QImage picture = landscape(QSize(320, 240));
    const auto image = decodeImage(write(jpegFile(picture, options)), 0);
    QVERIFY(image);
    QVERIFY(meanDifference(image->pixels(), picture) < 4);
}

void UnreadablePhotoTest::zeroBytesAreAnError() {
    QVERIFY(!decodeImage(write(QByteArray()), 200));
}

void UnreadablePhotoTest::whatIsNoPictureIsAnErrorThatNamesTheFile() {
    const auto image = decodeImage(m_folder.write("notes.jpg", "It rained all day.\n"), 200);
    QVERIFY(!image);
    QCOMPARE(image.error().localizedDescription(),
        QStringLiteral("“notes.jpg” is not a picture that can be read."));
}

void UnreadablePhotoTest::aFolderIsAnError() {
    const auto image = decodeImage(m_folder.makeFolder("folder.jpg"), 200);
    QVERIFY(!image);
    QCOMPARE(image.error().code(), EISDIR);
}

void UnreadablePhotoTest::aDanglingLinkIsAnError() {
    const FileURL link = m_folder.at("link.jpg");
    std::filesystem::create_symlink("nowhere.jpg", link.path());
    const auto image = decodeImage(link, 200);
    QVERIFY(!image);
    QCOMPARE(image.error().code(), ENOENT);
}

void UnreadablePhotoTest::aLinkToAPhotoIsThatPhoto() {
    const FileURL link = m_folder.at("other.jpg");
    std::filesystem::create_symlink(write(jpegFile(plain(QSize(20, 10), Qt::red))).path(), link.path());
    QCOMPARE(decodeImage(link, 0)->pixels().size(), QSize(20, 10));
}

void UnreadablePhotoTest::aPipeIsAnErrorAtOnce() {
    const FileURL pipe = m_folder.at("pipe.jpg");
    QCOMPARE(mkfifo(pipe.path().c_str(), 0600), 0);
    const auto image = decodeImage(pipe, 200);
    QVERIFY(!image);
    QCOMPARE(image.error().localizedDescription(), QStringLiteral("“pipe.jpg” is not a file."));
}

void UnreadablePhotoTest::aDeviceIsAnErrorAtOnce() {
    QVERIFY(!decodeImage(FileURL("/dev/zero"), 200));
}

void UnreadablePhotoTest::aVanishedPhotoIsAnError() {
    const auto image = decodeImage(m_folder.at("gone.jpg"), 200);
    QVERIFY(!image);
    QCOMPARE(image.error().localizedDescription(),
        QStringLiteral("“gone.jpg” could not be opened: it does not exist any more."));
}

void UnreadablePhotoTest::aPhotoWithoutPermissionIsAnError() {
    const WithoutPrivileges asAnyone;
    const FileURL photo = m_folder.write("private.jpg", jpegFile(plain(QSize(20, 10), Qt::red)));
    std::filesystem::permissions(photo.path(), std::filesystem::perms::none);
    const auto image = decodeImage(photo, 200);
    QVERIFY(!image);
    QCOMPARE(image.error().code(), EACCES);
}

void UnreadablePhotoTest::aDiskThatFailsIsAnError() {
    // A file that the system opens and then cannot read from its start: nothing is mapped at address 0.
    const FileURL link = m_folder.at("failing.jpg");
    std::filesystem::create_symlink("/proc/self/mem", link.path());
    const auto image = decodeImage(link, 200);
    QVERIFY(!image);
    QCOMPARE(image.error().code(), EIO);
    QCOMPARE(image.error().localizedDescription(),
        QStringLiteral("“failing.jpg” could not be read: the disk reported an error."));
}

void UnreadablePhotoTest::aNameInLatin1IsOpened() {
    const FileURL photo = m_folder.write("Stra\xdf"
                                         "e.jpg",
        jpegFile(plain(QSize(20, 10), Qt::red)));
    QVERIFY(decodeImage(photo, 0));
}

void UnreadablePhotoTest::aNameWithALineFeedIsOpened() {
    QVERIFY(decodeImage(m_folder.write("two\nlines.jpg", jpegFile(plain(QSize(20, 10), Qt::red))), 0));
}

void UnreadablePhotoTest::aNameOf255BytesIsOpened() {
    const std::string name = std::string(251, 'n') + ".jpg";
    QVERIFY(decodeImage(m_folder.write(name, jpegFile(plain(QSize(20, 10), Qt::red))), 0));
    const auto tooLong = decodeImage(m_folder.at(name + 'x'), 0);
    QVERIFY(!tooLong);
    QCOMPARE(tooLong.error().code(), ENAMETOOLONG);
}

void UnreadablePhotoTest::moreSidePixelsThanTheFormatAllowsAreRefused() {
    const QByteArray file = withSize(jpegFile(plain(QSize(20, 10), Qt::red)), 65535, 65535);
    const ProcessCost cost;
    QVERIFY(!decodeImage(write(file), 200));
    QVERIFY(!decodeImage(write(file), 0));
    QVERIFY(isRefusal(cost));
}

void UnreadablePhotoTest::tooManyPixelsAreRefused() {
    const auto photo = write(withSize(jpegFile(plain(QSize(20, 10), Qt::red)), 65000, 65000));
    const ProcessCost cost;
    const auto image = decodeImage(photo, 200);
    QVERIFY(isRefusal(cost));
    QVERIFY(!image);
    QCOMPARE(
        image.error().localizedDescription(), QStringLiteral("“photo.jpg” has too many pixels to be shown."));
}

void UnreadablePhotoTest::tooMuchMemoryForAProgressivePhotoIsRefused() {
    // 400 megapixels, within the limit, but 2.4 GB of coefficients.
    JpegOptions options;
    options.isProgressive = true;
    options.isSubsampled = false;
    const QByteArray file = withSize(jpegFile(plain(QSize(20, 10), Qt::red), options), 20000, 20000);
    const ProcessCost cost;
    QVERIFY(!decodeImage(write(file), 200));
    QVERIFY(isRefusal(cost));
}

void UnreadablePhotoTest::aLargeHeaderIsReadButNotAnEndlessOne() {
    const QByteArray file = jpegFile(plain(QSize(20, 10), Qt::red));
    const QByteArray segment = QByteArray("\xff\xe1\xff\xff") + QByteArray(0xffff - 2, 'x');
    const QByteArray start = file.left(2); // the marker that every file begins with
    QVERIFY(decodeImage(write(start + segment.repeated(500) + file.mid(2)), 0));
    QVERIFY(!decodeImage(write(start + segment.repeated(1100) + file.mid(2)), 0));
}

void UnreadablePhotoTest::nothingIsReadThatIsFarBehindThePhoto() {
    JpegOptions options;
    options.isProgressive = true;
    QByteArray file = jpegFile(landscape(QSize(64, 64)), options);
    const auto whole = decodeImage(write(file), 0);
    file.chop(2); // the end, which is looked for in all that follows
    const FileURL photo = write(file);
    std::filesystem::resize_file(photo.path(), std::uintmax_t{20} << 30);
    const ProcessCost cost;
    const auto image = decodeImage(photo, 0);
    constexpr std::chrono::seconds enough{10};
    QVERIFY2(cost.processorTime() < enough, qPrintable(QString::number(cost.processorTime().count())));
    QVERIFY(whole && image);
    QCOMPARE(image->pixels(), whole->pixels());
}

void UnreadablePhotoTest::lackOfMemoryIsAnError_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("maxPixelSize");
    const QImage picture = landscape(QSize(1600, 1000));
    JpegOptions progressive;
    progressive.isProgressive = true;
    QByteArray png;
    QBuffer buffer(&png);
    picture.save(&buffer, "PNG");
    for (const int size : {200, 1200, 0}) {
        QTest::addRow("JPEG at %d", size) << jpegFile(picture) << size;
        QTest::addRow("progressive JPEG at %d", size) << jpegFile(picture, progressive) << size;
        QTest::addRow("PNG at %d", size) << png << size;
    }
}

void UnreadablePhotoTest::lackOfMemoryIsAnError() {
    if (isSanitized) {
        QSKIP("a sanitizer needs all the memory there is");
    }
    QFETCH(QByteArray, file);
    QFETCH(int, maxPixelSize);
    const FileURL photo = write(file);
    QVERIFY(decodeImage(photo, maxPixelSize));
    const pid_t child = fork();
    if (child == 0) { // what it may not have, this process keeps
        for (const int crash : {SIGABRT, SIGSEGV}) {
            std::signal(crash, SIG_DFL); // ends it at once
        }
        _exit(decodeWithEverMoreMemory(photo, maxPixelSize) > 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    QVERIFY2(WIFEXITED(status) && WEXITSTATUS(status) == 0, qPrintable(QString::number(status)));
}

void UnreadablePhotoTest::manyScansAreShownButNotThousands_data() {
    QTest::addColumn<int>("times");
    QTest::addColumn<int>("maxPixelSize");
    QTest::addColumn<bool>("isShown");
    QTest::newRow("some") << 400 << 0 << true;
    QTest::newRow("too many") << 5000 << 0 << false;
    QTest::newRow("some, an eighth") << 400 << 8 << true;
    QTest::newRow("too many, an eighth") << 5000 << 8 << false;
}

void UnreadablePhotoTest::manyScansAreShownButNotThousands() {
    QFETCH(int, times);
    QFETCH(int, maxPixelSize);
    QFETCH(bool, isShown);
    JpegOptions options;
    options.isProgressive = true;
    options.isSubsampled = false;
    options.quality = 10; // so that the means of an eighth take all scans
    const QByteArray file = jpegFile(landscape(QSize(64, 64)), options);
    QCOMPARE(bool(decodeImage(write(withRepeatedScan(file, times)), maxPixelSize)), isShown);
}

QTEST_GUILESS_MAIN(UnreadablePhotoTest)
#include "UnreadablePhotoTest.moc"
