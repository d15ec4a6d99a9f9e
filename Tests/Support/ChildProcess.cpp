#include "Tests/Support/ChildProcess.h"

#include <linux/capability.h>
#include <sys/prctl.h>

#include <csignal>

using Platform::FileURL;

QProcessEnvironment environmentFor(const FileURL& home, const QString& displayName) {
    const auto own = QProcessEnvironment::systemEnvironment();
    const QString homePath = QString::fromStdString(home.path().native());
    QProcessEnvironment environment;
    for (const char* name : {"PATH", "LD_LIBRARY_PATH", "LANG", "LC_ALL", "TMPDIR", "ASAN_OPTIONS",
             "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (own.contains(name)) {
            environment.insert(name, own.value(name));
        }
    }
    environment.insert("DISPLAY", displayName);
    // No message bus, but an address: without one libdbus forks the program to start a bus, and where the fork meets a thread that
    // holds a lock of clang's sanitizers, the copy waits for that lock and the program for the copy, both forever.
    environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + homePath + "/no-message-bus");
    environment.insert("HOME", homePath);
    environment.insert("XDG_CONFIG_HOME", homePath + "/.config");
    environment.insert("XDG_RUNTIME_DIR", homePath);
    return environment;
}

void endWithThisProcess(QProcess& process) {
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

void endWithThisProcessAndHeedPermissions(QProcess& process) {
    process.setChildProcessModifier([] {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // What is not in the bounding set is not given to root either. Others have no such rights, and may
        // not drop.
        prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
        prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
    });
}

void endProcess(QProcess& process) {
    process.kill();
    process.waitForFinished(patience);
}
