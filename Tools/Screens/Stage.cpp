#include "Tools/Screens/Stage.h"

#include "Tools/Screens/SceneItems.h"
#include "Vantrel/MainWindow.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QtCore/qtestsupport_core.h>
#include <QtGui/qtestsupport_gui.h>

#include <algorithm>
#include <stdexcept>

using Platform::FileURL;

namespace {

constexpr int patience = 60'000; // milliseconds; in all sanitizers' slowness
constexpr int restingTime = 150; // milliseconds without a change; no animation here pauses that long
constexpr int largeSide = 1200;  // pixels of the picture that the screen hands to the canvas

template <typename Predicate>
void waitUntil(const std::string& what, Predicate isSo) {
    if (!QTest::qWaitFor(isSo, patience)) {
        throw std::runtime_error("in vain waited until " + what);
    }
}

QQuickItem& found(QQuickItem* item, const QString& name) {
    if (!item) {
        throw std::runtime_error("nothing on the screen is " + name.toStdString());
    }
    return *item;
}

int visibleItems(const QQuickItem& item) {
    int count = item.isVisible() ? 1 : 0;
    for (const QQuickItem* child : item.childItems()) {
        count += visibleItems(*child);
    }
    return count;
}

int longSide(const Platform::Image& image) {
    return image.isNull() ? 0 : std::max(image.pixels().width(), image.pixels().height());
}

} // namespace

Stage::Stage(QSize size, CullingViewModel::FeatureFlags features,
    const std::vector<std::filesystem::path>& photographs)
    : m_userDefaults(FileURL(std::filesystem::path(m_world.filePath("settings.json").toStdString()))),
      m_photographs(photographs),
      m_viewModel({m_scheduler, m_userDefaults, [this](const QString&, const FileURL&) { return m_folder; }},
          features) {
    setUpMainWindow(m_window, m_viewModel, m_scheduler);
    if (!m_window.rootObject()) {
        throw std::runtime_error("the screen has errors");
    }
    m_window.resize(size);
    m_window.show();
    m_window.requestActivate();
    if (!QTest::qWaitForWindowActive(&m_window, patience)) {
        throw std::runtime_error("the window does not become active");
    }
    waitUntil("the window has its size", [&] { return m_window.contentItem()->size() == QSizeF(size); });
}

FileURL Stage::openFolder(
    const std::string& name, const std::vector<std::string>& photoNames, std::size_t first) {
    m_folder = FileURL(std::filesystem::path(m_world.path().toStdString()) / name);
    std::filesystem::create_directory(m_folder.path());
    for (std::size_t index = 0; index < photoNames.size(); ++index) {
        std::filesystem::create_symlink(
            m_photographs[(first + index) % m_photographs.size()], m_folder.path() / photoNames[index]);
    }
    m_viewModel.openFolder();
    if (!photoNames.empty()) {
        waitUntil(
            "the first photo shows", [&] { return showsLargePicture() && !resolutionInfo().isEmpty(); });
    }
    return m_folder;
}

void Stage::changePicture(const std::function<void()>& step) {
    const Platform::Image before = m_viewModel.currentImage();
    step();
    waitUntil("another photo shows",
        [&] { return !(m_viewModel.currentImage() == before) && showsLargePicture(); });
}

void Stage::press(Qt::Key key) {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_window, &event);
    }
}

void Stage::pointAt(const QQuickItem& button) {
    const int before = visibleItems(button);
    const QPointF centre = button.mapToScene(button.boundingRect().center());
    QMouseEvent event(
        QEvent::MouseMove, centre, m_window.mapToGlobal(centre), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_window, &event);
    waitUntil("the tooltip shows", [&] { return visibleItems(button) > before; });
}

void Stage::zoomIn(int notches) {
    const QString before = resolutionInfo();
    const QPointF centre = QRectF(QPointF(), m_window.size()).center();
    for (int notch = 0; notch < notches; ++notch) {
        QWheelEvent event(centre, m_window.mapToGlobal(centre), QPoint(), {0, 120}, Qt::NoButton,
            Qt::ControlModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&m_window, &event);
    }
    waitUntil("more pixels show", [&] { return resolutionInfo() != before; });
}

QQuickItem& Stage::item(const QString& objectName) const {
    return found(firstItem(m_window, [&](const QQuickItem& item) { return item.objectName() == objectName; }),
        objectName);
}

QQuickItem& Stage::button(const QString& text) const {
    const auto isWanted = [&](const QQuickItem& item) {
        const bool canBeClicked = item.metaObject()->indexOfSignal("clicked()") >= 0;
        return canBeClicked && item.isVisible() && item.property("text") == text;
    };
    return found(firstItem(m_window, isWanted), text);
}

void Stage::waitForAlert(const QString& objectName) {
    const QQuickItem& alert = item(objectName);
    waitUntil(objectName.toStdString() + " is open", [&] { return alert.isVisible(); });
}

QImage Stage::picture() {
    QImage last = m_window.grabWindow();
    QElapsedTimer sinceChange;
    sinceChange.start();
    waitUntil("the window has come to rest", [&] {
        const QImage now = m_window.grabWindow();
        if (now != last) {
            last = now;
            sinceChange.restart();
        }
        return sinceChange.hasExpired(restingTime);
    });
    return last;
}

bool Stage::showsLargePicture() const {
    return longSide(m_viewModel.currentImage()) >= largeSide;
}

QString Stage::resolutionInfo() const {
    return m_window.rootObject()->property("resolutionInfo").toString();
}
