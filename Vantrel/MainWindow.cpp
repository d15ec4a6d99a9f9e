#include "Vantrel/MainWindow.h"

#include "Platform/Task.h"
#include "Vantrel/CullingViewModel.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickView>
#include <QScreen>

// Made by the build: the module's types are in a static library, where only a call keeps them.
void qml_register_types_Vantrel();

namespace {

constexpr QSize leastContentSize(900, 650);
constexpr QSize preferredContentSize(1440, 960);

/// As large as it is preferred, but leaving some of the desktop to be seen.
QSize firstSize(const QWindow& window) {
    const QScreen* screen = window.screen();
    const QSize available = screen ? screen->availableSize() * 0.9 : preferredContentSize;
    return preferredContentSize.boundedTo(available).expandedTo(leastContentSize);
}

} // namespace

void setUpMainWindow(QQuickView& window, CullingViewModel& viewModel, Platform::TaskScheduler& scheduler) {
    qml_register_types_Vantrel();
    window.setTitle(QGuiApplication::applicationDisplayName());
    window.setColor(Qt::black);
    window.setMinimumSize(leastContentSize);
    window.resize(firstSize(window));
    window.setResizeMode(QQuickView::SizeRootObjectToView);
    window.setInitialProperties({{QStringLiteral("viewModel"), QVariant::fromValue(&viewModel)},
        {QStringLiteral("taskScheduler"), QVariant::fromValue(&scheduler)}});
    window.engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    window.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Vantrel/ContentView.qml")));
}
