// culling-benchmark PHOTO...: what a session costs, on the application's own window, threads and decoder.
//
// Prints the time from choosing a folder of 1,000, 10,000 and 100,000 photos to the first one drawn, beside the decode
// that is part of it; what a step through cached photos costs the main thread; how long a key takes to show its photo
// with and without the preloading pass behind it; and the memory that the process holds once 2,000 photos are
// preloaded. The folders are filled with hard links to the photos given, so that drawing them costs nothing.
#include "Benchmarks/Measuring.h"
#include "Benchmarks/ObservedViewModel.h"
#include "Benchmarks/PhotoFolder.h"
#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Platform/SystemTaskScheduler.h"
#include "Platform/UserDefaults.h"
#include "Vantrel/MainWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QQuickView>
#include <QTemporaryDir>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <vector>

using Platform::FileURL;
namespace fs = std::filesystem;

namespace {

/// The application on a folder that it opens when told.
class Session {
public:
    Session() {
        setUpMainWindow(m_window, m_viewModel, m_scheduler);
        m_window.resize(1440, 960);
        m_window.show();
        waitForFrame();
    }

    ObservedViewModel& viewModel() { return m_viewModel; }

    void open(const FileURL& folder) {
        m_choice = folder;
        m_viewModel.openFolder();
    }

    /// Returns when the next frame is on the screen.
    void waitForFrame() {
        QEventLoop loop;
        QObject::connect(&m_window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
        m_window.update();
        loop.exec();
    }

    void press(int key) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_window, &press);
    }

private:
    QTemporaryDir m_home;
    Platform::UserDefaults m_userDefaults{FileURL(fs::path(m_home.filePath("settings.json").toStdString()))};
    Platform::SystemTaskScheduler m_scheduler;
    std::optional<FileURL> m_choice;
    ObservedViewModel m_viewModel{
        {m_scheduler, m_userDefaults, [this](const QString&, const FileURL&) { return m_choice; }}};
    QQuickView m_window;
};

void measureLoading(const std::vector<fs::path>& photos, int count) {
    const PhotoFolder folder(photos, count);
    QElapsedTimer timer;
    timer.start();
    const auto decoded = Platform::decodeImage(folder.url().appendingPathComponent("IMG_0.jpg"), 1200);
    const double decode = milliseconds(timer);
    Session session;
    timer.start();
    session.open(folder.url());
    session.waitForFrame();
    const double shown = milliseconds(timer);
    std::printf("load %6d photos: first photo drawn after %7.1f ms, of which one decode %5.1f ms%s\n", count,
        shown, decode, decoded ? "" : " (failed)");
}

void measureSteps(const std::vector<fs::path>& photos) {
    constexpr int count = 2000;
    const PhotoFolder folder(photos, count);
    Session session;
    session.open(folder.url());
    session.viewModel().waitForPreload(count);
    session.waitForFrame();
    std::printf("memory with %d photos preloaded: %.0f MiB\n", count, residentMemory());
    std::vector<double> steps;
    for (int step = 0; step < 1000; ++step) {
        QElapsedTimer timer;
        timer.start();
        session.press(Qt::Key_Right);
        steps.push_back(milliseconds(timer));
    }
    std::printf("step through %d cached photos, main thread: median %.3f ms, 95%% %.3f ms, most %.3f ms\n",
        count, percentile(steps, 0.5), percentile(steps, 0.95), percentile(steps, 1));
}

/// Presses a key 30 times a second and notes how long each takes to be drawn.
std::vector<double> keyTimes(Session& session, int presses) {
    std::vector<double> times;
    for (int press = 0; press < presses; ++press) {
        QElapsedTimer timer;
        timer.start();
        session.press(press % 2 == 0 ? Qt::Key_Right : Qt::Key_Left); // both cached: only the drawing differs
        session.waitForFrame();
        times.push_back(milliseconds(timer));
        while (milliseconds(timer) < 1000.0 / 30) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
    }
    return times;
}

void measureKeysDuringPreload(const std::vector<fs::path>& photos) {
    constexpr int presses = 150;
    constexpr int count = 2000;
    const PhotoFolder folder(photos, count);
    Session session;
    session.open(folder.url());
    session.viewModel().waitForPreload(2);
    const auto during = keyTimes(session, presses);
    const bool isStillPreloading = session.viewModel().preloadedPhotos() < count;
    const PhotoFolder pair(photos, 2);
    session.open(pair.url());
    session.viewModel().waitForPreload(2);
    const auto after = keyTimes(session, presses);
    std::printf(
        "key to drawn photo: median %.2f ms, 95%% %.2f ms without preloading; median %.2f ms, 95%% %.2f ms, "
        "most %.2f ms with it%s\n",
        percentile(after, 0.5), percentile(after, 0.95), percentile(during, 0.5), percentile(during, 0.95),
        percentile(during, 1), isStillPreloading ? "" : " (it ended meanwhile)");
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const std::vector<fs::path> photos(argv + 1, argv + argc);
    if (photos.empty()) {
        std::fprintf(stderr, "usage: culling-benchmark PHOTO...\n");
        return 2;
    }
    measureSteps(photos); // first, while the process holds nothing else
    for (const int count : {1000, 10000, 100000}) {
        measureLoading(photos, count);
    }
    measureKeysDuringPreload(photos);
    return 0;
}
