#include "Platform/GraphicsProcessor.h"
#include "Vantrel/VantrelApp.h"

#include <QApplication>
#include <QQuickWindow>

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

} // namespace

int main(int argc, char** argv) {
    QApplication::setOrganizationName(QStringLiteral("Vantrel"));
    QApplication::setApplicationName(QStringLiteral("Vantrel"));
    QApplication::setDesktopFileName(QStringLiteral("org.vantrel.Vantrel"));
    const QApplication application(argc, argv);
    chooseRenderer();
    VantrelApp vantrel;
    vantrel.show();
    return QApplication::exec();
}
