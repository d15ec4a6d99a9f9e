#include "Vantrel/LRUCache.h"

#include <QTest>

#include <string>

using Cache = LRUCache<int, std::string>;

class LRUCacheTest : public QObject {
    Q_OBJECT

private slots:
    void theLeastRecentlyUsedEntryIsEvictedFirst() {
        Cache cache(2);
        cache.write(1, "one");
        cache.write(2, "two");
        QCOMPARE(cache.read(1).value(), "one");
        cache.write(3, "three");
        QVERIFY(!cache.storage().contains(2));
        QCOMPARE(cache.order(), (std::vector{1, 3}));
        QCOMPARE(cache.read(1).value(), "one");
        QCOMPARE(cache.read(3).value(), "three");
    }

    void readingMakesAnEntryTheMostRecent() {
        Cache cache(3);
        cache.write(1, "one");
        cache.write(2, "two");
        cache.write(3, "three");
        cache.read(1);
        QCOMPARE(cache.order(), (std::vector{2, 3, 1}));
    }

    void reinsertingReplacesWithoutGrowingAndMakesTheMostRecent() {
        Cache cache(2);
        cache.write(1, "one");
        cache.write(2, "two");
        cache.write(1, "uno");
        QCOMPARE(cache.order(), (std::vector{2, 1}));
        QCOMPARE(cache.storage().size(), std::size_t(2));
        QCOMPARE(cache.read(1).value(), "uno");
    }

    void writingNothingRemovesTheEntry() {
        Cache cache(2);
        cache.write(1, "one");
        cache.write(2, "two");
        cache.write(1, std::nullopt);
        QVERIFY(!cache.read(1));
        QCOMPARE(cache.order(), std::vector{2});
    }

    void writingNothingForAnAbsentKeyChangesNothing() {
        Cache cache(2);
        cache.write(1, "one");
        cache.write(7, std::nullopt);
        QCOMPARE(cache.order(), std::vector{1});
        QCOMPARE(cache.read(1).value(), "one");
    }

    void aMissChangesNothing() {
        Cache cache(2);
        QVERIFY(!cache.read(1));
        cache.write(1, "one");
        cache.write(2, "two");
        QVERIFY(!cache.read(3));
        QCOMPARE(cache.order(), (std::vector{1, 2}));
    }

    void theNumberOfEntriesNeverExceedsTheCapacity() {
        Cache cache(15);
        for (int key = 0; key < 100; ++key) {
            cache.write(key, std::to_string(key));
            QCOMPARE(cache.order().size(), cache.storage().size());
            QVERIFY(std::ssize(cache.order()) <= cache.capacity());
        }
        QCOMPARE(cache.order().front(), 85);
        QCOMPARE(cache.order().back(), 99);
    }

    void removingAllKeepsTheCapacity() {
        Cache cache(2);
        cache.write(1, "one");
        cache.removeAll();
        QVERIFY(cache.storage().empty());
        QVERIFY(cache.order().empty());
        QCOMPARE(cache.capacity(), 2);
        QVERIFY(!cache.read(1));
    }
};

QTEST_APPLESS_MAIN(LRUCacheTest)
#include "LRUCacheTest.moc"
