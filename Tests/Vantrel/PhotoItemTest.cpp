#include "Vantrel/PhotoItem.h"

#include <QTest>

using Platform::FileURL;

class PhotoItemTest : public QObject {
    Q_OBJECT

private slots:
    void eachItemHasAnIdentityOfItsOwn() {
        const FileURL url("/photos/IMG_0001.JPG");
        const PhotoItem first(url, ReviewState::unreviewed);
        const PhotoItem second(url, ReviewState::unreviewed);
        QVERIFY(!first.id().isNull());
        QVERIFY(first.id() != second.id());
        QCOMPARE(first.id().version(), QUuid::Random);
        QVERIFY(first.url() == url);
    }

    void filenameIsTheLastPathComponentWithItsCaseKept() {
        QCOMPARE(
            PhotoItem(FileURL("/photos/IMG_0001.JPG"), ReviewState::unreviewed).filename(), "IMG_0001.JPG");
        QCOMPARE(PhotoItem(FileURL("/photos/a.b.jpg"), ReviewState::unreviewed).filename(), "a.b.jpg");
    }

    void filenameKeepsItsBytes() {
        QCOMPARE(PhotoItem(FileURL("/p/caf\xe9.jpg"), ReviewState::unreviewed).filename(), "caf\xe9.jpg");
    }

    void onlyTheStateChanges() {
        PhotoItem item(FileURL("/photos/a.jpg"), ReviewState::unreviewed);
        const QUuid id = item.id();
        item.setState(ReviewState::rejected);
        QVERIFY(item.state() == ReviewState::rejected);
        QCOMPARE(item.id(), id);
        QCOMPARE(item.filename(), "a.jpg");
    }

    void statesAreWrittenAsTheirRawTexts() {
        QCOMPARE(rawValue(ReviewState::unreviewed), std::string_view("unreviewed"));
        QCOMPARE(rawValue(ReviewState::approved), std::string_view("approved"));
        QCOMPARE(rawValue(ReviewState::rejected), std::string_view("rejected"));
    }

    void statesAreReadFromTheirRawTexts() {
        for (const auto state : {ReviewState::unreviewed, ReviewState::approved, ReviewState::rejected}) {
            QVERIFY(reviewState(rawValue(state)) == state);
        }
    }

    void anyOtherTextIsNoState() {
        for (const std::string_view text : {"Approved", "REJECTED", "", "approved ", "unreviewe"}) {
            QVERIFY(!reviewState(text).has_value());
        }
    }

    void statesAreNumberedInTheirOrder() {
        QCOMPARE(static_cast<int>(ReviewState::unreviewed), 0);
        QCOMPARE(static_cast<int>(ReviewState::approved), 1);
        QCOMPARE(static_cast<int>(ReviewState::rejected), 2);
    }

    void theHashOfAStateIsThatOfItsRawText() {
        QCOMPARE(std::hash<ReviewState>()(ReviewState::approved), std::hash<std::string_view>()("approved"));
    }
};

QTEST_APPLESS_MAIN(PhotoItemTest)
#include "PhotoItemTest.moc"
