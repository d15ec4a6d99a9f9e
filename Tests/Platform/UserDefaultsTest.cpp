#include "Platform/UserDefaults.h"

#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WithPermissions.h"
#include "Tests/Support/WithoutPrivileges.h"

#include <QTest>

#include <filesystem>

using Platform::FileURL;
using Platform::UserDefaults;

namespace {

const QString key = QStringLiteral("LastFolderBookmark");

} // namespace

class UserDefaultsTest : public QObject {
    Q_OBJECT

private slots:
    void anEntryThatWasNeverStoredIsNone() {
        const TemporaryFolder folder;
        QVERIFY(!UserDefaults(folder.at("settings.json")).data(key));
    }

    void bytesComeBackAsTheyWere_data() {
        QTest::addColumn<QByteArray>("bytes");
        QByteArray every;
        for (int byte = 0; byte < 256; ++byte) {
            every.append(static_cast<char>(byte));
        }
        QTest::newRow("every byte") << every;
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("looks like another entry") << QByteArray("\", \"x\": \"y");
        QTest::newRow("zeros") << QByteArray(3, '\0');
        QTest::newRow("not UTF-8") << QByteArray("\xe4\xff\xfe/photos");
    }

    void bytesComeBackAsTheyWere() {
        QFETCH(QByteArray, bytes);
        const TemporaryFolder folder;
        const FileURL file = folder.at("not/there/settings.json");
        UserDefaults defaults(file);
        defaults.setData(key, bytes);
        QCOMPARE(defaults.data(key), std::optional(bytes));
        QCOMPARE(UserDefaults(file).data(key), std::optional(bytes)); // of another start
    }

    void storingReplacesWhatWasThereAndNothingElse() {
        const TemporaryFolder folder;
        UserDefaults defaults(folder.at("settings.json"));
        defaults.setData(key, "first");
        defaults.setData(QStringLiteral("another"), "stays");
        defaults.setData(key, "second");
        QCOMPARE(defaults.data(key), std::optional(QByteArray("second")));
        QCOMPARE(defaults.data(QStringLiteral("another")), std::optional(QByteArray("stays")));
        QCOMPARE(namesIn(folder.url()), std::vector<std::string>{"settings.json"});
    }

    void aFileThatIsALinkIsWrittenWhereItLeads() {
        const TemporaryFolder folder;
        folder.makeFolder("kept elsewhere");
        std::filesystem::create_symlink("kept elsewhere/settings.json", folder.at("settings.json").path());
        UserDefaults(folder.at("settings.json")).setData(key, "bytes");
        QVERIFY(std::filesystem::is_symlink(folder.at("settings.json").path()));
        QCOMPARE(UserDefaults(folder.at("kept elsewhere/settings.json")).data(key),
            std::optional(QByteArray("bytes")));
    }

    void whereNothingCanBeWrittenAllStays() {
        const TemporaryFolder folder;
        UserDefaults defaults(folder.at("settings.json"));
        defaults.setData(key, "first");
        {
            const WithoutPrivileges asAnyone;
            const WithPermissions readOnly(folder.url(), std::filesystem::perms(0500));
            defaults.setData(key, "second");
        }
        QCOMPARE(defaults.data(key), std::optional(QByteArray("first")));
        QCOMPARE(namesIn(folder.url()), std::vector<std::string>{"settings.json"});
    }

    void aFileThatIsNotOneOfOursCountsAsNone_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut short") << QByteArray("{\"LastFolderBookmark\": \"Ynl0");
        QTest::newRow("a number") << QByteArray("{\"LastFolderBookmark\": 1}");
        QTest::newRow("no base64") << QByteArray("{\"LastFolderBookmark\": \"some text\"}");
        QTest::newRow("no object") << QByteArray("[]");
        QTest::newRow("bytes") << QByteArray("\0\xff[[\nLastFolderBookmark", 24);
        QTest::newRow("too large") << "{\"LastFolderBookmark\": \"Ynl0ZXM=\"}" + QByteArray(2 << 20, ' ');
    }

    void aFileThatIsNotOneOfOursCountsAsNone() {
        QFETCH(QByteArray, content);
        const TemporaryFolder folder;
        UserDefaults defaults(folder.write("settings.json", content));
        QVERIFY(!defaults.data(key));
        defaults.setData(key, "bytes");
        QCOMPARE(defaults.data(key), std::optional(QByteArray("bytes")));
    }
};

QTEST_GUILESS_MAIN(UserDefaultsTest)
#include "UserDefaultsTest.moc"
