#include "Platform/SystemTaskScheduler.h"
#include "Platform/UserDefaults.h"
#include "Vantrel/CullingViewModel.h"
#include "Vantrel/MainWindow.h"

#include <QApplication>
#include <QQuickView>

/// The application with the features that are not offered yet.
int main(int argc, char** argv) {
    QApplication::setOrganizationName(QStringLiteral("Vantrel"));
    QApplication::setApplicationName(QStringLiteral("Vantrel"));
    QApplication::setDesktopFileName(QStringLiteral("org.vantrel.Vantrel"));
    const QApplication application(argc, argv);
    Platform::UserDefaults userDefaults(Platform::UserDefaults::standardFile());
    Platform::SystemTaskScheduler scheduler;
    CullingViewModel viewModel({scheduler, userDefaults, Platform::runFolderChooser},
        {.isLockZoomFeatureEnabled = true, .isSyncRawFeatureEnabled = true});
    QQuickView window;
    setUpMainWindow(window, viewModel, scheduler);
    window.show();
    return QApplication::exec();
}
