#include "Platform/UserDefaults.h"

#include "Tests/Support/TemporaryFolder.h"

#include <QSettings>
#include <QTest>

using Platform::UserDefaults;

namespace {

const QString key = QStringLiteral("LastFolderBookmark");

/// Settings in a file of their own, as a program's start finds them on the disk.
class SettingsFile {
public:
    explicit SettingsFile(const TemporaryFolder& folder)
        : m_settings(
              QString::fromStdString(folder.at("settings.ini").path().native()), QSettings::IniFormat) {}

    QSettings& operator*() { return m_settings; }

private:
    QSettings m_settings;
};

} // namespace

class UserDefaultsTest : public QObject {
    Q_OBJECT

private slots:
    void anEntryThatWasNeverStoredIsNone() {
        const TemporaryFolder folder;
        SettingsFile file(folder);
        QVERIFY(!UserDefaults(*file).data(key));
    }

    void bytesComeBackAsTheyWere_data() {
        QTest::addColumn<QByteArray>("bytes");
        QByteArray every;
        for (int byte = 0; byte < 256; ++byte) {
            every.append(static_cast<char>(byte));
        }
        QTest::newRow("every byte") << every;
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("looks like another entry") << QByteArray("@ByteArray(a,b;c)\n[x]\n\"y\"=1, 2");
        QTest::newRow("zeros") << QByteArray(3, '\0');
        QTest::newRow("not UTF-8") << QByteArray("\xe4\xff\xfe/photos");
    }

    void bytesComeBackAsTheyWere() {
        QFETCH(QByteArray, bytes);
        const TemporaryFolder folder;
        SettingsFile file(folder);
        UserDefaults defaults(*file);
        defaults.setData(key, bytes);
        QCOMPARE(defaults.data(key), std::optional(bytes));
        // What is on the disk by now is all that another start has.
        const TemporaryFolder restarted;
        restarted.write("settings.ini", contentOf(folder.at("settings.ini")));
        SettingsFile copy(restarted);
        QCOMPARE(UserDefaults(*copy).data(key), std::optional(bytes));
    }

    void storingReplacesWhatWasThere() {
        const TemporaryFolder folder;
        SettingsFile file(folder);
        UserDefaults defaults(*file);
        defaults.setData(key, "first");
        defaults.setData(key, "second");
        QCOMPARE(defaults.data(key), std::optional(QByteArray("second")));
    }

    void aValueThatIsNotBytesCountsAsNone() {
        const TemporaryFolder folder;
        folder.write("settings.ini", "[General]\nLastFolderBookmark=some text\n");
        SettingsFile file(folder);
        QVERIFY(!UserDefaults(*file).data(key));
    }

    void aDamagedFileCountsAsNone() {
        const TemporaryFolder folder;
        folder.write("settings.ini", QByteArray("\0\xff[[\nLastFolderBookmark", 24));
        SettingsFile file(folder);
        QVERIFY(!UserDefaults(*file).data(key));
    }
};

QTEST_GUILESS_MAIN(UserDefaultsTest)
#include "UserDefaultsTest.moc"
