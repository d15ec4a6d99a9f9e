// preload-benchmark [COUNT]: how many photos per second the application preloads.
//
// Opens a folder of COUNT drawn photos of 24 megapixels (500 where no number is given) with the application's own view
// model, threads and decoder, and waits until all have their small thumbnail. Then decodes as many, one after the other on
// one thread, by libjpeg at 1/8 of their size, which is what a library would do.
#include "Benchmarks/DrawnPhotos.h"
#include "Benchmarks/LibjpegDecoding.h"
#include "Benchmarks/Measuring.h"
#include "Benchmarks/ObservedViewModel.h"
#include "Benchmarks/PhotoFolder.h"
#include "Platform/SystemTaskScheduler.h"
#include "Platform/UserDefaults.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int mostPhotos = 2000; // the view model keeps no more small thumbnails

std::vector<fs::path> drawPhotos(const fs::path& folder) {
    constexpr unsigned count = 3;
    std::vector<fs::path> photos;
    for (unsigned seed = 1; seed <= count; ++seed) {
        photos.push_back(folder / (std::to_string(seed) + ".jpg"));
        writePhoto(photos.back(), drawPhotograph(seed), cameraFormat());
    }
    return photos;
}

/// In seconds, from choosing the folder to the last thumbnail.
double preload(const PhotoFolder& folder, int count) {
    const QTemporaryDir home;
    Platform::UserDefaults userDefaults(
        Platform::FileURL(fs::path(home.filePath("settings.json").toStdString())));
    Platform::SystemTaskScheduler scheduler;
    ObservedViewModel viewModel(
        {scheduler, userDefaults, [&](const QString&, const Platform::FileURL&) { return folder.url(); }});
    QElapsedTimer timer;
    timer.start();
    viewModel.openFolder();
    viewModel.waitForPreload(count);
    return milliseconds(timer) / 1000;
}

/// In seconds.
double decodeOneAfterTheOther(const PhotoFolder& folder, int count) {
    constexpr int size = 200;
    QElapsedTimer timer;
    timer.start();
    for (int index = 0; index < count; ++index) {
        decodeByLibjpeg(folder.path(index).string(), size);
    }
    return milliseconds(timer) / 1000;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 500;
    check(count >= 1 && count <= mostPhotos, "usage: preload-benchmark [COUNT], from 1 to 2000");
    const QTemporaryDir originals;
    const PhotoFolder folder(drawPhotos(originals.path().toStdString()), count);
    const double preloading = preload(folder, count);
    const double decoding = decodeOneAfterTheOther(folder, count);
    std::printf("preloading %d photos:          %7.1f photos/s\n", count, count / preloading);
    std::printf("libjpeg at 1/8 on one thread: %7.1f photos/s\n", count / decoding);
    std::printf("factor:                       %7.2f\n", decoding / preloading);
    return EXIT_SUCCESS;
}
