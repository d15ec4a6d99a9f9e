// Takes a picture of every state of the screen that has as many pixels per point as this run (QT_SCALE_FACTOR).

#include "Tools/Screens/ScreenState.h"
#include "Tools/Screens/Stage.h"

#include <QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace {

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        files.push_back(std::filesystem::absolute(entry.path()));
    }
    if (files.empty()) {
        throw std::runtime_error("there are no photographs in " + folder.native());
    }
    std::ranges::sort(files);
    return files;
}

void photograph(const ScreenState& state, const std::vector<std::filesystem::path>& photographs,
    const std::filesystem::path& folder) {
    Stage stage(state.size, state.features, photographs);
    state.arrange(stage);
    const QString file = QString::fromStdString((folder / (state.name.toStdString() + ".png")).native());
    if (!stage.picture().save(file)) {
        throw std::runtime_error("cannot write " + file.toStdString());
    }
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication::setApplicationName(QStringLiteral("Vantrel"));
    const QGuiApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("usage: photograph-screens PHOTOGRAPHS FOLDER\n"
                   "Writes a picture of every state of the screen into FOLDER, with PHOTOGRAPHS on it.\n",
            stderr);
        return 2;
    }
    int failures = 0;
    try {
        const auto photographs = filesIn(argv[1]);
        std::filesystem::create_directories(argv[2]);
        for (const ScreenState& state : screenStates(application.devicePixelRatio())) {
            try {
                photograph(state, photographs, argv[2]);
            } catch (const std::exception& error) {
                std::fprintf(
                    stderr, "photograph-screens: %s: %s\n", qUtf8Printable(state.name), error.what());
                ++failures;
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "photograph-screens: %s\n", error.what());
        return 1;
    }
    return failures == 0 ? 0 : 1;
}
