#include "Tests/Vantrel/ScreenFixture.h"

#include "Tools/Screens/SceneItems.h"
#include "Vantrel/MainWindow.h"
#include "Vantrel/PhotoCanvasView.h"

#include <QTest>

#include <stdexcept>

const std::vector<std::string> threePhotos = {"a.jpg", "b.jpg", "c.jpg"};

ScreenFixture::ScreenFixture(
    const std::vector<std::string>& photoNames, CullingViewModel::FeatureFlags features) {
    start(features);
    showWindow();
    if (!photoNames.empty()) {
        writePhotos(photos, photoNames, {1500, 1000});
        model().loadFolder(photos.url());
        scheduler.runAll();
    }
}

ScreenFixture::~ScreenFixture() {
    window.reset(); // before the view model, which it shows
}

void ScreenFixture::showWindow() {
    window = std::make_unique<QQuickView>();
    setUpMainWindow(*window, *viewModel, scheduler);
    window->show();
    window->requestActivate();
    if (!QTest::qWaitForWindowActive(window.get())) {
        throw std::runtime_error("the window does not become active");
    }
}

void ScreenFixture::resize(QSize size) {
    window->resize(size);
    QTRY_COMPARE(window->contentItem()->size(), QSizeF(size));
}

template <typename Predicate>
QQuickItem* ScreenFixture::shownItem(Predicate isWanted) const {
    QQuickItem* shown =
        firstItem(*window, [&](const QQuickItem& item) { return item.isVisible() && isWanted(item); });
    return shown ? shown : firstItem(*window, isWanted);
}

QQuickItem* ScreenFixture::item(const char* objectName) const {
    return shownItem([&](const QQuickItem& item) { return item.objectName() == QLatin1String(objectName); });
}

bool ScreenFixture::isShown(const char* objectName) const {
    const QQuickItem* found = item(objectName);
    return found && found->isVisible();
}

bool ScreenFixture::hasText(const char* objectName, const QString& text) const {
    const auto texts = item(objectName)->findChildren<QQuickItem*>();
    return std::ranges::any_of(texts, [&](const QQuickItem* item) {
        return item->inherits("QQuickText") && item->isVisible() && item->property("text") == text;
    });
}

bool ScreenFixture::isOpen(const char* objectName) const {
    const QObject* alert = window->rootObject()->findChild<QObject*>(QLatin1String(objectName));
    return alert && alert->property("visible").toBool();
}

QImage ScreenFixture::picture() {
    return window->grabWindow();
}

const CanvasGeometry& ScreenFixture::geometry() {
    picture();
    const auto* canvas = item("imageView")->findChild<PhotoCanvasView*>();
    if (!canvas) {
        throw std::runtime_error("there is no photo");
    }
    return canvas->geometry();
}

void ScreenFixture::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(window.get(), key, modifiers);
}

bool ScreenFixture::takes(int key, Qt::KeyboardModifiers modifiers, bool isRepeated, quint32 scanCode) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers, scanCode, 0, 0, QString(), isRepeated);
    QCoreApplication::sendEvent(window.get(), &event);
    return event.isAccepted();
}

QQuickItem* ScreenFixture::button(const QString& text) const {
    return shownItem([&](const QQuickItem& item) {
        return item.property("text") == text && item.metaObject()->indexOfSignal("clicked()") >= 0;
    });
}

void ScreenFixture::click(const QString& buttonText) {
    const QQuickItem* found = button(buttonText);
    if (!found || !found->isVisible()) {
        throw std::runtime_error("no such button: " + buttonText.toStdString());
    }
    QTest::mouseClick(window.get(), Qt::LeftButton, Qt::NoModifier, centreOf(*found));
}

QString ScreenFixture::focused() const {
    const QQuickItem* item = window->activeFocusItem();
    if (!item) {
        return "nothing";
    }
    return item->objectName().isEmpty() ? item->property("text").toString() : item->objectName();
}

void ScreenFixture::focus(const QString& name) {
    constexpr int moreThanThereAre = 20;
    for (int pressed = 0; focused() != name; ++pressed) {
        if (pressed == moreThanThereAre) {
            throw std::runtime_error("Tab does not get to " + name.toStdString());
        }
        press(Qt::Key_Tab);
    }
}

void ScreenFixture::turnWheel(int notches, Qt::KeyboardModifiers modifiers) {
    turnWheelAt(QRectF(QPointF(), window->size()).center(), notches, modifiers);
}

void ScreenFixture::turnWheelAt(QPointF place, int notches, Qt::KeyboardModifiers modifiers) {
    constexpr quint64 betweenSteps = 20;
    for (int notch = 0; notch < std::abs(notches); ++notch) {
        QWheelEvent event(place, place, QPoint(), {0, notches > 0 ? 120 : -120}, Qt::NoButton, modifiers,
            Qt::NoScrollPhase, false);
        event.setTimestamp(m_lastWheelStep += betweenSteps);
        QCoreApplication::sendEvent(window.get(), &event);
    }
}

QString ScreenFixture::account() {
    QString text;
    QDebug(&text) << "at" << model().currentIndex() << "of" << model().photoCount() << "approved"
                  << model().approvedCount() << "rejected" << model().rejectedCount() << "undoable"
                  << model().undoStack().size() << "locked" << model().keepZoom() << "asked"
                  << chooserMessage;
    if (isShown("imageView")) {
        QDebug(&text) << "scale" << geometry().zoomScale << "offset" << geometry().imageOffset;
    }
    return text;
}

QPoint centreOf(const QQuickItem& item) {
    return placeOf(item).center().toPoint();
}

QRectF placeOf(const QQuickItem& item) {
    return item.mapRectToScene(item.boundingRect());
}
