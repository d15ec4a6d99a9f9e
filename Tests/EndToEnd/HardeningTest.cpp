#include <QProcess>
#include <QTest>

/// The program as it is delivered, as binutils read it.
class HardeningTest : public QObject {
    Q_OBJECT

private slots:
    void theProgramIsLoadedAtAnyAddress();
    void itsStackIsNotExecutable();
    void theAddressesOfLibraryFunctionsAreReadOnly();
    void overrunsOfTheStackAreNoticed();
    void libraryCallsCheckTheSizesOfBuffers();
    void jumpsGoOnlyWhereAFunctionBegins();
};

namespace {

QString readelf(const QString& options, const QString& file = QStringLiteral(VANTREL_PROGRAM)) {
    QProcess process;
    process.start(QStringLiteral("readelf"), {options, QStringLiteral("--wide"), file});
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// The line of a text that holds the word; "" where none does.
QString lineWith(const QString& word, const QString& text) {
    const QStringList lines = text.split(u'\n').filter(word);
    return lines.value(0);
}

} // namespace

void HardeningTest::theProgramIsLoadedAtAnyAddress() {
    const QString header = readelf(QStringLiteral("--file-header"));
    QVERIFY2(lineWith(QStringLiteral("Type:"), header).contains(u"DYN"), qPrintable(header));
}

void HardeningTest::itsStackIsNotExecutable() {
    const QString stack = lineWith(QStringLiteral("GNU_STACK"), readelf(QStringLiteral("--program-headers")));
    QVERIFY2(stack.contains(u" RW "), qPrintable(stack));
}

void HardeningTest::theAddressesOfLibraryFunctionsAreReadOnly() {
    QVERIFY(readelf(QStringLiteral("--program-headers")).contains(u"GNU_RELRO"));
    QVERIFY(readelf(QStringLiteral("--dynamic")).contains(u"BIND_NOW"));
}

void HardeningTest::overrunsOfTheStackAreNoticed() {
    QVERIFY(readelf(QStringLiteral("--dyn-syms")).contains(u"__stack_chk_fail"));
}

void HardeningTest::libraryCallsCheckTheSizesOfBuffers() {
    QVERIFY(readelf(QStringLiteral("--dyn-syms")).contains(u"_chk@GLIBC"));
}

void HardeningTest::jumpsGoOnlyWhereAFunctionBegins() {
#ifdef __CET__
    // Of our own part: the program as a whole has it where the system's start files and libraries do.
    const QString notes = readelf(QStringLiteral("--notes"), QStringLiteral(VANTREL_MAIN_OBJECT));
    const QString features = lineWith(QStringLiteral("x86 feature"), notes);
    QVERIFY2(features.contains(u"IBT") && features.contains(u"SHSTK"), qPrintable(notes));
#else
    QSKIP("the compiler has no such protection for this processor");
#endif
}

QTEST_GUILESS_MAIN(HardeningTest)
#include "HardeningTest.moc"
