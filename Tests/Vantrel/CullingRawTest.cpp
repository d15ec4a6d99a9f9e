#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <unistd.h>

using Platform::FileURL;
using Names = std::vector<std::string>;

namespace {

const QString nothingFound = QStringLiteral("No orphan RAW files found. All .ARW files have a matching JPG.");

Names orphanNames(const OpenViewModel& viewModel) {
    Names result;
    for (const FileURL& url : viewModel.orphanRawURLs()) {
        result.push_back(url.lastPathComponent());
    }
    return result;
}

} // namespace

class CullingRawTest : public QObject {
    Q_OBJECT

private slots:
    void syncingIsOfferedWhereAFolderIsOpenAndTheFeatureIsOn() {
        CullingFixture fixture;
        QVERIFY(!fixture.start({.isSyncRawFeatureEnabled = true}).canSyncRaw());
        fixture.viewModel->loadFolder(fixture.photos.url());
        QVERIFY(fixture.viewModel->canSyncRaw());
        QVERIFY(!fixture.start().canSyncRaw());
        QVERIFY(fixture.viewModel->hasFolder());
    }

    void baseNamesAreComparedWithCaseAndExtensionsWithout() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"IMG_1.jpg", "IMG_3.jpg"});
        for (const char* name :
            {"IMG_1.ARW", "img_1.ARW", "IMG_2.arw", "IMG_3.Arw", "IMG_4.raw", "IMG_5.ARW.txt"}) {
            fixture.photos.write(name, "raw");
        }
        const OpenViewModel& viewModel = search(fixture);
        QCOMPARE(orphanNames(viewModel), (Names{"img_1.ARW", "IMG_2.arw"}));
        QCOMPARE(
            viewModel.rawSyncAlertMessage(), QString("Found 2 RAW file(s) without a matching "
                                                     "JPG:\n\nimg_1.ARW\nIMG_2.arw\n\nDelete these files?"));
        QVERIFY(viewModel.showRawSyncAlert());
        QVERIFY(viewModel.rawSyncAlertAsksToDelete());
    }

    void aNameWithTwoDotsKeepsTheFirst() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.b.jpg"});
        fixture.photos.write("a.b.ARW", "raw");
        fixture.photos.write("a.ARW", "raw");
        QCOMPARE(orphanNames(search(fixture)), Names{"a.ARW"});
    }

    void withoutRawFilesTheAlertSaysSo() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"a.jpg"});
        const OpenViewModel& viewModel = search(fixture);
        QCOMPARE(viewModel.rawSyncAlertMessage(), nothingFound);
        QVERIFY(viewModel.orphanRawURLs().empty());
        QVERIFY(viewModel.showRawSyncAlert());
        QVERIFY(!viewModel.rawSyncAlertAsksToDelete());
    }

    void aSearchWithoutOrphansForgetsThoseOfTheSearchBefore() {
        CullingFixture fixture;
        fixture.photos.write("a.ARW", "raw");
        OpenViewModel& viewModel = search(fixture);
        QCOMPARE(orphanNames(viewModel), Names{"a.ARW"});
        unlink(fixture.photos.at("a.ARW").path().c_str());
        viewModel.findOrphanRawFiles();
        QVERIFY(viewModel.orphanRawURLs().empty());
        QCOMPARE(viewModel.rawSyncAlertMessage(), nothingFound);
    }

    void theMatchIsAgainstTheListNotTheDisk() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"IMG_3.jpg", "IMG_4.jpg"});
        fixture.photos.write("IMG_3.ARW", "raw");
        OpenViewModel& viewModel = fixture.start({.isSyncRawFeatureEnabled = true});
        viewModel.loadFolder(fixture.photos.url());
        viewModel.cycleState();
        viewModel.moveRejected();
        viewModel.findOrphanRawFiles();
        QCOMPARE(orphanNames(viewModel), Names{"IMG_3.ARW"});
    }

    void aPhotoDeletedOutsideStillCountsWhileItIsInTheList() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"IMG_1.jpg"});
        fixture.photos.write("IMG_1.ARW", "raw");
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        unlink(fixture.photos.at("IMG_1.jpg").path().c_str());
        viewModel.findOrphanRawFiles();
        QVERIFY(viewModel.orphanRawURLs().empty());
    }

    void orphansAreInNameOrderAndAllAreListed() {
        CullingFixture fixture;
        for (int index = 500; index >= 1; --index) {
            fixture.photos.write("DSC" + std::to_string(index) + ".ARW", "raw");
        }
        const OpenViewModel& viewModel = search(fixture);
        const QStringList lines = viewModel.rawSyncAlertMessage().split('\n');
        QCOMPARE(lines.size(), 2 + 500 + 2);
        QCOMPARE(lines.front(), QString("Found 500 RAW file(s) without a matching JPG:"));
        for (int index = 1; index <= 500; ++index) {
            QCOMPARE(lines[1 + index], QString("DSC%1.ARW").arg(index));
        }
    }

    void hiddenFilesCountAndSubfoldersDoNot() {
        CullingFixture fixture;
        fixture.photos.write(".hidden.ARW", "raw");
        fixture.photos.makeFolder("deeper");
        fixture.photos.write("deeper/b.ARW", "raw");
        QCOMPARE(orphanNames(search(fixture)), Names{".hidden.ARW"});
    }

    void withoutAFolderNothingHappens() {
        CullingFixture fixture;
        OpenViewModel& viewModel = fixture.start({.isSyncRawFeatureEnabled = true});
        viewModel.findOrphanRawFiles();
        viewModel.deleteOrphanRawFiles();
        QVERIFY(!viewModel.showRawSyncAlert());
        QVERIFY(!viewModel.hasErrorMessage());
        QCOMPARE(viewModel.rawSyncAlertMessage(), QString(""));
    }

    void aFolderThatCannotBeListedIsAnErrorAndLeavesTheLastSearch() {
        CullingFixture fixture;
        const FileURL folder = fixture.photos.makeFolder("shoot");
        fixture.photos.write("shoot/a.ARW", "raw");
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(folder);
        viewModel.findOrphanRawFiles();
        viewModel.setShowRawSyncAlert(false);
        const QString before = viewModel.rawSyncAlertMessage();
        std::filesystem::remove_all(folder.path());
        viewModel.findOrphanRawFiles();
        const QString prefix = "Failed to scan folder: ";
        QVERIFY(viewModel.errorText().startsWith(prefix) && viewModel.errorText().size() > prefix.size());
        QVERIFY(!viewModel.showRawSyncAlert());
        QCOMPARE(viewModel.rawSyncAlertMessage(), before);
        QCOMPARE(orphanNames(viewModel), Names{"a.ARW"});
    }

    void deletingRemovesExactlyWhatWasListed() {
        CullingFixture fixture;
        writePhotos(fixture.photos, {"IMG_1.jpg"});
        fixture.photos.write("IMG_1.ARW", "raw");
        fixture.photos.write("IMG_2.ARW", "raw");
        OpenViewModel& viewModel = search(fixture);
        fixture.photos.write("IMG_9.ARW", "came later");
        viewModel.deleteOrphanRawFiles();
        QCOMPARE(namesIn(fixture.photos.url()), (Names{"IMG_1.ARW", "IMG_1.jpg", "IMG_9.ARW"}));
        QVERIFY(viewModel.orphanRawURLs().empty());
        QVERIFY(!viewModel.hasErrorMessage());
        QCOMPARE(viewModel.photoCount(), 1);
        QVERIFY(viewModel.showRawSyncAlert()); // closing it is the alert's business
        QVERIFY(viewModel.rawSyncAlertAsksToDelete());
    }

    void deletingTwiceDoesNothingMore() {
        CullingFixture fixture;
        fixture.photos.write("a.ARW", "raw");
        OpenViewModel& viewModel = search(fixture);
        viewModel.deleteOrphanRawFiles();
        fixture.photos.write("a.ARW", "written anew");
        viewModel.deleteOrphanRawFiles();
        QVERIFY(exists(fixture.photos.at("a.ARW")));
    }

    void failuresAreListedAndTheOthersDeleted() {
        CullingFixture fixture;
        for (const char* name : {"a.ARW", "b.ARW", "c.ARW"}) {
            fixture.photos.write(name, "raw");
        }
        OpenViewModel& viewModel = search(fixture);
        for (const char* name : {"a.ARW", "c.ARW"}) { // folders with something in them cannot be deleted
            unlink(fixture.photos.at(name).path().c_str());
            fixture.photos.makeFolder(name);
            fixture.photos.write(std::string(name) + "/inside", "x");
        }
        viewModel.deleteOrphanRawFiles();
        const QStringList lines = viewModel.errorText().split('\n');
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[0], QString("Failed to delete some RAW files:"));
        QVERIFY(lines[1].startsWith("a.ARW: ") && lines[1].size() > 15);
        QVERIFY(lines[2].startsWith("c.ARW: ") && lines[2].size() > 15);
        QCOMPARE(namesIn(fixture.photos.url()), (Names{"a.ARW", "c.ARW"}));
        QVERIFY(viewModel.orphanRawURLs().empty());
    }

    void aLinkIsDeletedAndNotWhatItLeadsTo() {
        CullingFixture fixture;
        fixture.photos.makeFolder("elsewhere");
        fixture.photos.write("elsewhere/raw", "raw");
        fixture.photos.write("elsewhere/deep.ARW", "raw");
        for (const char* name : {"raw", "deep.ARW", ""}) {
            const std::string target = std::string("elsewhere/") + name;
            const std::string link = std::string("link ") + name + ".ARW";
            QCOMPARE(symlink(target.c_str(), fixture.photos.at(link).path().c_str()), 0);
        }
        OpenViewModel& viewModel = search(fixture);
        QCOMPARE(viewModel.orphanRawURLs().size(), 3U);
        viewModel.deleteOrphanRawFiles();
        QVERIFY(!viewModel.hasErrorMessage());
        QCOMPARE(namesIn(fixture.photos.url()), Names{"elsewhere"});
        QCOMPARE(namesIn(fixture.photos.at("elsewhere")), (Names{"deep.ARW", "raw"}));
    }

    void neitherOperationClearsAnEarlierMessage() {
        CullingFixture fixture;
        fixture.photos.write("a.ARW", "raw");
        OpenViewModel& viewModel = fixture.start();
        viewModel.loadFolder(fixture.photos.url());
        viewModel.setErrorMessage(QString("earlier"));
        viewModel.findOrphanRawFiles();
        viewModel.deleteOrphanRawFiles();
        QCOMPARE(viewModel.errorText(), QString("earlier"));
    }

private:
    static OpenViewModel& search(CullingFixture& fixture) {
        OpenViewModel& viewModel = fixture.start({.isSyncRawFeatureEnabled = true});
        viewModel.loadFolder(fixture.photos.url());
        viewModel.findOrphanRawFiles();
        return viewModel;
    }
};

QTEST_GUILESS_MAIN(CullingRawTest)
#include "CullingRawTest.moc"
