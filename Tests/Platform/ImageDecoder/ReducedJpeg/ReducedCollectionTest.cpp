#include "Tests/Platform/ImageDecoder/ReducedJpeg/CoefficientComparison.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTest>

using namespace Platform;

/// Decodes the coefficients of each photo of a collection, where it lies beside the checkout.
class ReducedCollectionTest : public QObject {
    Q_OBJECT

private slots:
    void theCoefficientsAreThoseOfTheLibrary_data();
    void theCoefficientsAreThoseOfTheLibrary();
    void cleanupTestCase();

private:
    const QDir m_folder{QStringLiteral(PHOTO_COLLECTION)};
    int m_compared = 0;
};

void ReducedCollectionTest::theCoefficientsAreThoseOfTheLibrary_data() {
    QTest::addColumn<QString>("name");
    if (!m_folder.exists()) {
        QSKIP("there is no collection of photos beside the checkout");
    }
    QStringList names;
    QDirIterator files(m_folder.path(), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        names.append(m_folder.relativeFilePath(files.next()));
    }
    names.sort();
    for (const QString& name : std::as_const(names)) {
        QTest::newRow(name.toUtf8()) << name;
    }
}

void ReducedCollectionTest::theCoefficientsAreThoseOfTheLibrary() {
    QFETCH(QString, name);
    QFile file(m_folder.filePath(name));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    const FileURL photo(std::filesystem::path(QFile::encodeName(file.fileName()).toStdString()));
    std::optional<LibraryCoefficients> library;
    const EntropyDecoder::Cut small{.windowBytes = 3000, .segmentBytes = 70, .valuesPerBand = 3000};
    for (const DecodingWay& way :
        {DecodingWay{8, 2, {}}, DecodingWay{8, 3, small}, DecodingWay{4, 1, small}, DecodingWay{2, 2, {}}}) {
        if (!library) {
            library.emplace(content);
        }
        const Comparison comparison = decodeBeside(*library, photo, way);
        if (!comparison.isTaken) {
            return;
        }
        QVERIFY2(comparison.difference.isEmpty(), qPrintable(comparison.difference));
        QVERIFY2(comparison.isFinished == library->areValid(),
            comparison.isFinished ? "the library warns of what is taken for valid"
                                  : "what is valid for the library is not finished");
        m_compared += comparison.isFinished ? 1 : 0;
    }
}

void ReducedCollectionTest::cleanupTestCase() {
    QVERIFY(!m_folder.exists() || m_compared > 0);
}

QTEST_GUILESS_MAIN(ReducedCollectionTest)
#include "ReducedCollectionTest.moc"
