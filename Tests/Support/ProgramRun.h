#pragma once

#include <QString>
#include <QStringList>

/// A program that has run to its end, and what it has written.
struct ProgramRun {
    int status;
    QString output;
    QString errors;
};

/// Runs a program with these arguments. It ends with the test, however that ends.
ProgramRun runProgram(const QString& program, const QStringList& arguments);
