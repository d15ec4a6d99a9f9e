// decode-benchmark [PHOTO.jpg...]: how long photos take from file to pixels through the application's decoder and through
// what one could use instead, at the sizes of the application, on one processor core and on all; and how long the
// application goes on with a photo that is left.
//
// Without photos it draws some of 24 megapixels. Prints a table for each photo and at the end how the application stands
// at its worst. Takes some minutes.
#include "Benchmarks/Contenders.h"
#include "Benchmarks/DrawnPhotos.h"
#include "Benchmarks/Measuring.h"
#include "Benchmarks/ProcessorCores.h"
#include "Platform/ImageDecoder/ImageDecoder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImageReader>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

struct Photo {
    std::string name;
    fs::path path;
};

/// What is asked of all contenders alike.
struct Setting {
    int size; // of the longer side in pixels; 0: all
    int cores;

    bool operator==(const Setting&) const = default;
};

/// How a photo was decoded in one setting.
struct Result {
    Setting setting;
    std::vector<double> times; // milliseconds, one for each contender
    double timeToStop;         // of the application, at the worst

    /// The application's time as a part of the best of the others.
    double ratio() const { return times.front() / *std::min_element(times.begin() + 1, times.end()); }
};

/// How the application stood where it stood worst.
struct Worst {
    Setting setting;
    double ratio;
    std::string photo;
};

std::string sizeText(int size) {
    return size == 0 ? "full" : std::to_string(size) + " px";
}

std::string coresText(int cores) {
    return std::to_string(cores) + (cores == 1 ? " core" : " cores");
}

std::vector<Photo> drawPhotos(const fs::path& folder) {
    const QImage picture = drawPhotograph(1);
    const std::vector<PhotoFormat> formats{cameraFormat(),
        {.name = "4:2:0", .horizontalSampling = 2, .verticalSampling = 2}, {.name = "4:4:4"},
        {.name = "4:2:2 with restart markers", .horizontalSampling = 2, .hasRestartMarkers = true},
        {.name = "4:2:0 progressive", .horizontalSampling = 2, .verticalSampling = 2, .isProgressive = true}};
    std::vector<Photo> photos;
    for (const PhotoFormat& format : formats) {
        photos.push_back({format.name, folder / (std::to_string(photos.size()) + ".jpg")});
        writePhoto(photos.back().path, picture, format);
    }
    return photos;
}

/// Measures one photo after the other and keeps what is to be said of all of them.
class Comparison {
public:
    explicit Comparison(const char* program) : m_contenders(makeContenders(program)) {}

    void measure(const Photo& photo, const std::vector<int>& sizes) {
        const QSize size = QImageReader(QString::fromStdString(photo.path.string())).size();
        check(size.isValid(), "not a photo: " + photo.path.string());
        std::printf("\n%s: %d x %d, %.1f MB\n", photo.name.c_str(), size.width(), size.height(),
            static_cast<double>(fs::file_size(photo.path)) / 1e6);
        std::vector<Result> results;
        for (const Setting& setting : settings(sizes, std::max(size.width(), size.height()))) {
            const std::vector<double> times = medians(photo.path, setting);
            results.push_back({setting, times, worstTimeToStop(photo.path, setting, times.front())});
            noteWorst(results.back(), photo.name);
        }
        print(results);
    }

    void printWorst() const {
        std::printf("\nThe application's time against that of the best of the others, at its worst:\n");
        for (const Worst& worst : m_worst) {
            std::printf("%8s %8s  %.2f of the best (%s)\n", sizeText(worst.setting.size).c_str(),
                coresText(worst.setting.cores).c_str(), worst.ratio, worst.photo.c_str());
        }
    }

private:
    /// Those in which the photo is not enlarged.
    std::vector<Setting> settings(const std::vector<int>& sizes, int longSide) const {
        std::vector<Setting> all;
        for (const int size : sizes) {
            if (size >= longSide) {
                continue;
            }
            all.push_back({size, 1});
            if (m_cores.count() > 1) {
                all.push_back({size, m_cores.count()});
            }
        }
        return all;
    }

    /// The contenders take turns, so that whatever else the machine does hits all of them.
    std::vector<double> medians(const fs::path& path, const Setting& setting) const {
        constexpr int rounds = 9;
        std::vector<std::vector<double>> times(m_contenders.size());
        for (int round = 0; round <= rounds; ++round) {
            for (std::size_t turn = 0; turn < times.size(); ++turn) {
                const double time = timeOf(m_contenders[turn], path, setting);
                if (round > 0) { // the first warms up
                    times[turn].push_back(time);
                }
            }
        }
        std::vector<double> result;
        result.reserve(times.size());
        for (const std::vector<double>& ofContender : times) {
            result.push_back(percentile(ofContender, 0.5));
        }
        return result;
    }

    double timeOf(const Contender& contender, const fs::path& path, const Setting& setting) const {
        m_cores.keepTo(setting.cores);
        setContenderThreads(setting.cores);
        QElapsedTimer timer;
        timer.start();
        const bool isDecoded = contender.decode(path, setting.size);
        const double time = milliseconds(timer);
        check(isDecoded, contender.name + " cannot decode " + path.string());
        return time;
    }

    /// Decodes that are left at different times, up to their end.
    double worstTimeToStop(const fs::path& path, const Setting& setting, double time) const {
        m_cores.keepTo(setting.cores);
        constexpr int times = 20;
        double worst = 0;
        for (int i = 1; i <= times; ++i) {
            const Milliseconds whenLeft(time * i / times);
            worst = std::max(worst, timeToStop(path, setting.size, whenLeft));
        }
        return worst;
    }

    static double timeToStop(const fs::path& path, int size, Milliseconds whenLeft) {
        using Clock = std::chrono::steady_clock;
        const Platform::Task task;
        Clock::time_point end;
        std::thread decoding([&] {
            (void)Platform::decodeImage(Platform::FileURL(path.string()), size, task);
            end = Clock::now();
        });
        std::this_thread::sleep_for(whenLeft);
        const Clock::time_point left = Clock::now();
        task.cancel();
        decoding.join();
        return Milliseconds(end - left).count();
    }

    void noteWorst(const Result& result, const std::string& photo) {
        const auto isSame = [&](const Worst& worst) { return worst.setting == result.setting; };
        const auto known = std::ranges::find_if(m_worst, isSame);
        if (known == m_worst.end()) {
            m_worst.push_back({result.setting, result.ratio(), photo});
        } else if (result.ratio() > known->ratio) {
            *known = {result.setting, result.ratio(), photo};
        }
    }

    void print(const std::vector<Result>& results) const {
        std::printf("%16s", "ms");
        for (const Result& result : results) {
            std::printf(
                "%16s", (sizeText(result.setting.size) + ' ' + coresText(result.setting.cores)).c_str());
        }
        for (std::size_t contender = 0; contender < m_contenders.size(); ++contender) {
            std::printf("\n%16s", m_contenders[contender].name.c_str());
            for (const Result& result : results) {
                std::printf("%16.1f", result.times[contender]);
            }
        }
        std::printf("\n%16s", "of the best");
        for (const Result& result : results) {
            std::printf("%16.2f", result.ratio());
        }
        std::printf("\n%16s", "left: goes on");
        for (const Result& result : results) {
            std::printf("%16.1f", result.timeToStop);
        }
        std::printf("\n");
        std::fflush(stdout); // it takes a while until the next
    }

    const ProcessorCores m_cores;
    const std::vector<Contender> m_contenders;
    std::vector<Worst> m_worst; // by setting, in the order in which they came
};

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    std::vector<Photo> photos;
    for (int argument = 1; argument < argc; ++argument) {
        const fs::path path = argv[argument];
        photos.push_back({path.filename().string(), path});
    }
    if (photos.empty()) {
        photos = drawPhotos(folder.path().toStdString());
    }
    Comparison comparison(argv[0]);
    for (const Photo& photo : photos) {
        const bool isFirst = &photo == &photos.front();
        comparison.measure(photo, isFirst ? std::vector{200, 1200, 2400, 0} : std::vector{200, 1200, 2400});
    }
    comparison.printWorst();
    return EXIT_SUCCESS;
}
