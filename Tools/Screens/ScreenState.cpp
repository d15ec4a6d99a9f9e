#include "Tools/Screens/ScreenState.h"

#include "Tools/Screens/Stage.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

using Platform::FileURL;

namespace {

constexpr CullingViewModel::FeatureFlags allFeatures{
    .isLockZoomFeatureEnabled = true, .isSyncRawFeatureEnabled = true};
const std::string folderName = "2026-10 Coast";

/// As a camera names them: VTR_0001.JPG, VTR_0002.JPG...
std::vector<std::string> cameraNames(int count, const char* extension) {
    std::vector<std::string> names;
    for (int number = 1; number <= count; ++number) {
        char name[32];
        std::snprintf(name, sizeof name, "VTR_%04d.%s", number, extension);
        names.emplace_back(name);
    }
    return names;
}

std::vector<std::string> photoNames() {
    return cameraNames(24, "JPG");
}

void mark(CullingViewModel& viewModel, char verdict) {
    if (verdict == 'a') {
        viewModel.toggleApproved();
    } else if (verdict == 'r') {
        viewModel.cycleState();
    }
}

/// Walks from the first photo to as many as there are verdicts, of which 'a' approves, 'r' rejects and '-' passes by.
void review(Stage& stage, std::string_view verdicts) {
    CullingViewModel& viewModel = stage.viewModel();
    stage.changePicture([&] {
        mark(viewModel, verdicts.front());
        for (const char verdict : verdicts.substr(1)) {
            viewModel.nextPhoto();
            mark(viewModel, verdict);
        }
    });
}

void showOrphans(Stage& stage, int count) {
    const FileURL folder = stage.openFolder(folderName, {"VTR_1001.JPG", "VTR_1002.JPG"}, 2);
    for (const std::string& name : cameraNames(count, "ARW")) {
        std::ofstream(folder.path() / name) << "raw";
    }
    stage.viewModel().findOrphanRawFiles();
    stage.waitForAlert("rawSyncAlert");
}

/// Each photo finds a folder with something in it where it is to be moved, and that is never replaced.
void showMoveFailures(Stage& stage, int count) {
    const std::vector<std::string> names = cameraNames(count + 1, "JPG");
    const FileURL folder = stage.openFolder(folderName, names, 4);
    review(stage, std::string(count, 'a') + '-');
    for (const std::string& name : names) {
        std::filesystem::create_directories(folder.path() / "approved" / name / "not empty");
    }
    stage.changePicture([&] { stage.viewModel().moveApproved(); });
    stage.waitForAlert("errorAlert");
}

void showUnreviewed(Stage& stage) {
    stage.openFolder(folderName, photoNames());
}

void showApproved(Stage& stage) {
    stage.openFolder(folderName, photoNames());
    review(stage, "ar-a");
}

void showRejected(Stage& stage) {
    stage.openFolder(folderName, photoNames());
    review(stage, "aa-r--r");
}

void showZoomed(Stage& stage) {
    stage.openFolder(folderName, photoNames());
    stage.zoomIn(12);
}

void showLongNames(Stage& stage) {
    const std::string folder =
        "2026-10-18 A walk along the coast from the harbour to the lighthouse, and back "
        "over the hills in the evening, before the rain came in from the sea and the ferry back to "
        "the mainland was late by an hour and a half, with more photos of waves than needed";
    const std::string photo =
        "The lighthouse in the evening, seen from the hills, with the first stars above it "
        "and a ship far out at sea.JPG";
    stage.openFolder(folder, {photo, "VTR_0002.JPG"}, 6);
}

void showManyScripts(Stage& stage) {
    stage.openFolder(
        "Küste Ακτή Берег 海岸 かいがん 해안", {"Été Θάλασσα Море 大海 うみ 바다.JPG", "VTR_0002.JPG"}, 8);
}

void showZoomLocked(Stage& stage) {
    stage.openFolder(folderName, photoNames(), 10);
    stage.viewModel().setKeepZoom(true);
}

void showToolTip(Stage& stage, const QString& buttonText) {
    showApproved(stage);
    stage.pointAt(stage.button(buttonText));
}

/// Steps from control to control until the button has the focus.
void showKeyboardFocus(Stage& stage, const QString& buttonText) {
    showApproved(stage);
    const QQuickItem& button = stage.button(buttonText);
    constexpr int manyControls = 20;
    for (int step = 0; step < manyControls && !button.hasActiveFocus(); ++step) {
        stage.press(Qt::Key_Tab);
    }
    if (!button.hasActiveFocus()) {
        throw std::runtime_error("the key Tab does not lead to " + buttonText.toStdString());
    }
}

std::vector<ScreenState> allScreenStates() {
    return {
        {"empty", [](Stage&) {}},
        {"no-images", [](Stage& stage) { stage.openFolder(folderName, {}); }},
        {"unreviewed", showUnreviewed},
        {"approved", showApproved},
        {"rejected", showRejected},
        {"zoomed", showZoomed},
        {"long-names", showLongNames},
        {"many-scripts", showManyScripts},
        {"orphan", [](Stage& stage) { showOrphans(stage, 1); }, allFeatures},
        {"orphans-500", [](Stage& stage) { showOrphans(stage, 500); }, allFeatures},
        {"error", [](Stage& stage) { showMoveFailures(stage, 1); }},
        {"errors-500", [](Stage& stage) { showMoveFailures(stage, 500); }},
        {"zoom-lock-off", showUnreviewed, allFeatures},
        {"zoom-lock-on", showZoomLocked, allFeatures},
        {"least-size", showApproved, {}, {900, 650}},
        {"least-size-all-features", showLongNames, allFeatures, {900, 650}},
        {"least-size-errors-500", [](Stage& stage) { showMoveFailures(stage, 500); }, {}, {900, 650}},
        {"tooltip-top", [](Stage& stage) { showToolTip(stage, "Undo"); }},
        {"tooltip-bottom", [](Stage& stage) { showToolTip(stage, "Move Approved (2)"); }},
        {"keyboard-focus", [](Stage& stage) { showKeyboardFocus(stage, "Move Approved (2)"); }},
        {"4k", showApproved, {}, {1920, 1080}, 2},
    };
}

} // namespace

std::vector<ScreenState> screenStates(double scale) {
    std::vector<ScreenState> states = allScreenStates();
    std::erase_if(states, [&](const ScreenState& state) { return state.scale != scale; });
    return states;
}
