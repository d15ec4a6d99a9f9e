#include "Platform/Error.h"

#include <QTest>

#include <cerrno>

using Platform::Error;

class ErrorTest : public QObject {
    Q_OBJECT

private slots:
    void aGivenSentenceIsKept() {
        const Error error(QStringLiteral("It went wrong."));
        QCOMPARE(error.localizedDescription(), QStringLiteral("It went wrong."));
        QCOMPARE(error.code(), 0);
    }

    void aFailedCallIsToldWithTheNameAndTheReason() {
        const Error error = Error::ofSystemCall(QStringLiteral("“%1” could not be moved"), "a.jpg", ENOENT);
        QCOMPARE(error.localizedDescription(),
            QStringLiteral("“a.jpg” could not be moved: it does not exist any more."));
        QCOMPARE(error.code(), ENOENT);
    }

    void everyReasonIsASentenceOnOneLine() {
        for (int code = 1; code < 200; ++code) {
            const Error error = Error::ofSystemCall(QStringLiteral("“%1” could not be moved"), "a.jpg", code);
            const QString& text = error.localizedDescription();
            QVERIFY2(text.startsWith(QStringLiteral("“a.jpg” could not be moved: ")), qPrintable(text));
            QVERIFY2(text.endsWith(u'.') && !text.endsWith(QStringLiteral(": .")), qPrintable(text));
            QVERIFY(!text.contains(u'\n'));
        }
    }

    void aNameIsNeverTakenForAPlaceholder() {
        const Error error = Error::ofSystemCall(QStringLiteral("“%1” could not be moved"), "%1%2%3", EACCES);
        QCOMPARE(error.localizedDescription(),
            QStringLiteral("“%1%2%3” could not be moved: you do not have permission."));
    }

    void aNameThatIsNotUtf8OrHasALineFeedIsShownAllTheSame() {
        const Error error = Error::ofSystemCall(QStringLiteral("“%1” could not be moved"), "\xe4\n.jpg", EIO);
        QCOMPARE(error.localizedDescription(),
            QStringLiteral("“\ufffd\u240a.jpg” could not be moved: the disk reported an error."));
    }
};

QTEST_GUILESS_MAIN(ErrorTest)
#include "ErrorTest.moc"
