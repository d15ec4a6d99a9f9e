#pragma once

#include "Platform/FileURL.h"

#include <QProcess>

/// How long to wait for what is sure to happen, in milliseconds: long enough for the busiest machine.
constexpr int patience = 20'000;

/// The surroundings of a program on that display: a home of its own, no message bus, and nothing of the desktop that runs the
/// tests but language, temporary folder and what finds and checks programs.
QProcessEnvironment environmentFor(const Platform::FileURL& home, const QString& displayName);

/// Has the system end a process that is yet to be started when this one ends, however it ends.
void endWithThisProcess(QProcess& process);

/// The same, and takes from it root's right to read and write everything, so that permissions hold for it.
void endWithThisProcessAndHeedPermissions(QProcess& process);

/// Ends a process, which is given no say in it, and waits until it is gone.
void endProcess(QProcess& process);
