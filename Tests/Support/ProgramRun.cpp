#include "Tests/Support/ProgramRun.h"

#include "Tests/Support/ChildProcess.h"

ProgramRun runProgram(const QString& program, const QStringList& arguments) {
    QProcess process;
    endWithThisProcess(process);
    process.start(program, arguments);
    process.waitForFinished(-1);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError())};
}
