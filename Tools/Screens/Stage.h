#pragma once

#include "Platform/SystemTaskScheduler.h"
#include "Platform/UserDefaults.h"
#include "Vantrel/CullingViewModel.h"

#include <QImage>
#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// The main window on a real view model, in a world of its own: the settings and folders in it are gone with it.
/// Whatever is waited for here comes in time, or std::runtime_error says what did not. Main thread.
class Stage {
public:
    /// Shows the window, at that size in points, and waits until it is active.
    /// @param photographs  what folders are filled with, again and again; at least one, and none so small that zooming
    ///                     finds no more pixels in it
    Stage(QSize size, CullingViewModel::FeatureFlags features,
        const std::vector<std::filesystem::path>& photographs);

    CullingViewModel& viewModel() { return m_viewModel; }
    QQuickView& window() { return m_window; }

    /// Makes a folder of that name with photographs of these names, opens it and waits until its first photo shows.
    /// @param first  position of the photograph that stands under the first name
    Platform::FileURL openFolder(
        const std::string& name, const std::vector<std::string>& photoNames, std::size_t first = 0);

    /// Takes a step that changes which picture shows, and waits until the new one shows as large as it comes.
    void changePicture(const std::function<void()>& step);

    /// Presses and releases a key.
    void press(Qt::Key key);

    /// Moves the pointer over the button and waits for its tooltip.
    void pointAt(const QQuickItem& button);

    /// Turns the wheel over the middle of the window with Control held, and waits for the pixels that the zoom needs.
    void zoomIn(int notches);

    /// The item of that objectName; the button with that text.
    QQuickItem& item(const QString& objectName) const;
    QQuickItem& button(const QString& text) const;

    /// Waits until the alert of that objectName shows.
    void waitForAlert(const QString& objectName);

    /// What the window shows once it has come to rest.
    QImage picture();

private:
    bool showsLargePicture() const;
    QString resolutionInfo() const;

    QTemporaryDir m_world;
    Platform::UserDefaults m_userDefaults;
    Platform::SystemTaskScheduler m_scheduler;
    std::vector<std::filesystem::path> m_photographs;
    Platform::FileURL m_folder; // what the user chooses
    CullingViewModel m_viewModel;
    QQuickView m_window; // last: it shows the view model
};
