#include "Tests/EndToEnd/OpeningFolders.h"

#include <QTest>

#include <X11/keysym.h>

using Platform::FileURL;

bool showChooser(VirtualScreen& screen, const RunningApplication& application) {
    screen.press({XK_Control_L, XK_o});
    const QString title = QStringLiteral("Select a folder containing JPG images to review.");
    return QTest::qWaitFor([&] { return application.isInFront(title); }, patience);
}

bool openFolder(VirtualScreen& screen, const RunningApplication& application, const FileURL& folder) {
    if (!showChooser(screen, application)) {
        return false;
    }
    screen.type(folder.path().native());
    screen.press({XK_Return});
    return QTest::qWaitFor([&] { return application.isInFront(); }, patience);
}
