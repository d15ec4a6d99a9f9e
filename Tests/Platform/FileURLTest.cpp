#include "Platform/FileURL.h"

#include "Tests/Support/TemporaryFolder.h"

#include <QTest>

#include <filesystem>

using Platform::displayText;
using Platform::FileURL;
using Platform::isSameExtension;

namespace {

/// Another working directory, to the end of the scope.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::filesystem::path& path) { std::filesystem::current_path(path); }
    ~WorkingDirectory() { std::filesystem::current_path(m_before); }

private:
    const std::filesystem::path m_before = std::filesystem::current_path();
};

} // namespace

class FileURLTest : public QObject {
    Q_OBJECT

private slots:
    void noLocationIsEmptyInEveryPart() {
        const FileURL none;
        QVERIFY(none.isEmpty());
        QCOMPARE(none.lastPathComponent(), std::string());
        QCOMPARE(none.pathExtension(), std::string());
        QCOMPARE(none.baseName(), std::string());
        QVERIFY(none.deletingLastPathComponent().isEmpty());
        QVERIFY(FileURL(std::filesystem::path()).isEmpty());
        QVERIFY(none == FileURL());
    }

    void aLocationIsAbsoluteAndPlain_data() {
        QTest::addColumn<QByteArray>("given");
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("plain") << QByteArray("/a/b") << QByteArray("/a/b");
        QTest::newRow("slash at the end") << QByteArray("/a/b/") << QByteArray("/a/b");
        QTest::newRow("several slashes") << QByteArray("//a//b//") << QByteArray("/a/b");
        QTest::newRow("dots") << QByteArray("/a/./c/../b/.") << QByteArray("/a/b");
        QTest::newRow("root") << QByteArray("/") << QByteArray("/");
        QTest::newRow("root in several slashes") << QByteArray("///") << QByteArray("/");
        QTest::newRow("above the root") << QByteArray("/../..") << QByteArray("/");
    }

    void aLocationIsAbsoluteAndPlain() {
        QFETCH(QByteArray, given);
        QFETCH(QByteArray, path);
        QCOMPARE(FileURL(given.toStdString()).path().native(), path.toStdString());
        QVERIFY(FileURL(given.toStdString()) == FileURL(path.toStdString()));
    }

    void aRelativePathStartsAtTheWorkingDirectory() {
        const TemporaryFolder folder;
        const WorkingDirectory inFolder(folder.url().path());
        QCOMPARE(FileURL("a/b").path(), std::filesystem::current_path() / "a" / "b");
        QCOMPARE(FileURL(".").path(), std::filesystem::current_path());
    }

    void aRelativePathIsNoLocationWhereTheWorkingDirectoryIsGone() {
        const TemporaryFolder folder;
        const FileURL gone = folder.makeFolder("gone");
        const WorkingDirectory inGone(gone.path());
        std::filesystem::remove(gone.path());
        QVERIFY(FileURL("a").isEmpty());
        QCOMPARE(FileURL("/a").path().native(), std::string("/a"));
    }

    void aNameIsTakenApart_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("base");
        QTest::addColumn<QByteArray>("extension");
        QTest::newRow("plain") << QByteArray("IMG_1.JPG") << QByteArray("IMG_1") << QByteArray("JPG");
        QTest::newRow("two dots") << QByteArray("a.b.jpg") << QByteArray("a.b") << QByteArray("jpg");
        QTest::newRow("no dot") << QByteArray("jpg") << QByteArray("jpg") << QByteArray();
        QTest::newRow("dot at the end") << QByteArray("a.") << QByteArray("a") << QByteArray();
        QTest::newRow("hidden") << QByteArray(".jpg") << QByteArray(".jpg") << QByteArray();
        QTest::newRow("hidden photo") << QByteArray("._a.jpg") << QByteArray("._a") << QByteArray("jpg");
        QTest::newRow("Latin-1") << QByteArray("\xe4.jpg") << QByteArray("\xe4") << QByteArray("jpg");
        QTest::newRow("line feed") << QByteArray("a\nb.jpg") << QByteArray("a\nb") << QByteArray("jpg");
    }

    void aNameIsTakenApart() {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, base);
        QFETCH(QByteArray, extension);
        const FileURL url = FileURL("/photos").appendingPathComponent(name.toStdString());
        QCOMPARE(url.lastPathComponent(), name.toStdString());
        QCOMPARE(url.baseName(), base.toStdString());
        QCOMPARE(url.pathExtension(), extension.toStdString());
        QVERIFY(url.deletingLastPathComponent() == FileURL("/photos"));
    }

    void theRootHasItselfAsNameAndFolder() {
        const FileURL root("/");
        QCOMPARE(root.lastPathComponent(), std::string("/"));
        QVERIFY(root.deletingLastPathComponent() == root);
        QCOMPARE(root.appendingPathComponent("a").path().native(), std::string("/a"));
        QVERIFY(FileURL("/a").deletingLastPathComponent() == root);
    }

    void extensionsAreTheSameWhateverTheCaseOfAsciiLetters() {
        QVERIFY(isSameExtension("JPG", "jpg"));
        QVERIFY(isSameExtension("aRw", "ArW"));
        QVERIFY(isSameExtension("", ""));
        QVERIFY(!isSameExtension("jpg", "jpeg"));
        QVERIFY(!isSameExtension("jpe", "jpg"));
        QVERIFY(!isSameExtension("[", "{")); // 32 apart, as letters of two cases are
        QVERIFY(!isSameExtension("\xc4", "\xe4"));
    }

    void textForShowingKeepsWhatCanBeShown() {
        QCOMPARE(displayText("Übung 1.jpg"), QStringLiteral("Übung 1.jpg"));
        QCOMPARE(displayText(""), QString());
    }

    void textForShowingMarksBytesThatAreNotUtf8() {
        QCOMPARE(displayText("\xe4.jpg"), QStringLiteral("\ufffd.jpg"));
    }

    void textForShowingStaysOnOneLine() {
        QCOMPARE(displayText("a\nb\rc\td\x7f"), QStringLiteral("a\u240ab\u240dc\u2409d\u2421"));
        QCOMPARE(displayText("a\u0085b\u2028c\u2029d"), QStringLiteral("a\ufffdb\u240ac\u240ad"));
    }
};

QTEST_GUILESS_MAIN(FileURLTest)
#include "FileURLTest.moc"
