#include "Vantrel/MainWindow.h"

#include "Platform/Task.h"
#include "Vantrel/Control.h"
#include "Vantrel/CullingViewModel.h"
#include "Vantrel/HeldKeys.h"

#include <QGuiApplication>
#include <QIcon>
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

/// Gives the application its icon once the first picture is on the screen, which need not wait for it.
void setIconAfterFirstFrame(QQuickView& window) {
    const auto setIcon = [] {
        QGuiApplication::setWindowIcon(
            QIcon(QStringLiteral(":/qt/qml/Vantrel/Assets/org.vantrel.Vantrel.svg")));
    };
    QObject::connect(&window, &QQuickWindow::frameSwapped, &window, setIcon,
        static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
}

} // namespace

void setUpMainWindow(QQuickView& window, CullingViewModel& viewModel, Platform::TaskScheduler& scheduler) {
    qml_register_types_Vantrel();
    Control::installAccessibility();
    window.setTitle(QGuiApplication::applicationDisplayName());
    new HeldKeys(window); // the window owns it
    setIconAfterFirstFrame(window);
    window.setColor(Qt::black);
    window.setMinimumSize(leastContentSize);
    window.resize(firstSize(window));
    window.setResizeMode(QQuickView::SizeRootObjectToView);
    window.setInitialProperties({{QStringLiteral("viewModel"), QVariant::fromValue(&viewModel)},
        {QStringLiteral("taskScheduler"), QVariant::fromValue(&scheduler)}});
    window.engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    window.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Vantrel/ContentView.qml")));
}
