#pragma once

#include "Platform/SystemTaskScheduler.h"
#include "Platform/UserDefaults.h"
#include "Vantrel/CullingViewModel.h"

#include <QFontDatabase>
#include <QQuickView>

#include <thread>

/// The application: one view model for the life of the process, and the main window that shows it. Made on the main
/// thread after the QApplication.
class VantrelApp {
public:
    /// Makes the view model, which reopens the last folder, and then the window.
    VantrelApp();

    /// Shows the main window.
    void show();

private:
    Platform::UserDefaults m_userDefaults{Platform::UserDefaults::standardFile()};
    /// Looks for the system's fonts while the main thread decodes the first photo.
    std::jthread m_fontSearch{[] { QFontDatabase::families(); }};
    Platform::SystemTaskScheduler m_scheduler;
    CullingViewModel m_viewModel{{m_scheduler, m_userDefaults, Platform::runFolderChooser}};
    QQuickView m_window;
};
