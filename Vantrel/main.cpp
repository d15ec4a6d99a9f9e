#include "Platform/GraphicsProcessor.h"
#include "Platform/Heaps.h"
#include "Vantrel/VantrelApp.h"

#include <QApplication>
#include <QQuickWindow>

#include <sys/resource.h>

#include <algorithm>

namespace {

/// Without a graphics processor the painter draws this screen in less than half the time that OpenGL takes. What the
/// user has told the toolkit to draw with stands.
void chooseRenderer() {
    const bool isChosen =
        qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND");
    if (!isChosen && !Platform::hasGraphicsProcessor()) {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }
}

/// A photo on a disk that does not answer holds a file open for as long; the usual 1024 would soon be all, and nothing else could
/// be opened any more.
void allowManyOpenFiles() {
    constexpr rlim_t wanted = 8192;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < wanted) {
        limit.rlim_cur = std::min(wanted, limit.rlim_max);
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace

int main(int argc, char** argv) {
    Platform::shareHeaps();
    allowManyOpenFiles();
    QApplication::setOrganizationName(QStringLiteral("Vantrel"));
    QApplication::setApplicationName(QStringLiteral("Vantrel"));
    QApplication::setDesktopFileName(QStringLiteral("org.vantrel.Vantrel"));
    const QApplication application(argc, argv);
    chooseRenderer();
    VantrelApp vantrel;
    vantrel.show();
    return QApplication::exec();
}
