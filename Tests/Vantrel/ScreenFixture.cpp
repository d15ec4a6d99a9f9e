#include "Tests/Vantrel/ScreenFixture.h"

#include "Vantrel/MainWindow.h"

#include <QTest>

#include <stdexcept>

ScreenFixture::ScreenFixture(CullingViewModel::FeatureFlags features)
    : window(std::make_unique<QQuickView>()) {
    start(features);
    setUpMainWindow(*window, *viewModel, scheduler);
    window->show();
    window->requestActivate();
    if (!QTest::qWaitForWindowActive(window.get())) {
        throw std::runtime_error("the window does not become active");
    }
}

ScreenFixture::~ScreenFixture() {
    window.reset(); // before the view model, which it shows
}

template <typename Predicate>
QQuickItem* ScreenFixture::firstItem(Predicate isWanted) const {
    std::vector<QQuickItem*> open{window->contentItem()};
    while (!open.empty()) {
        QQuickItem* candidate = open.back();
        open.pop_back();
        if (isWanted(*candidate)) {
            return candidate;
        }
        const auto children = candidate->childItems();
        open.insert(open.end(), children.begin(), children.end());
    }
    return nullptr;
}

QQuickItem* ScreenFixture::item(const char* objectName) const {
    return firstItem([&](const QQuickItem& item) { return item.objectName() == QLatin1String(objectName); });
}

bool ScreenFixture::isShown(const char* objectName) const {
    const QQuickItem* found = item(objectName);
    return found && found->isVisible();
}

bool ScreenFixture::isOpen(const char* objectName) const {
    const QObject* alert = window->rootObject()->findChild<QObject*>(QLatin1String(objectName));
    return alert && alert->property("visible").toBool();
}

QImage ScreenFixture::picture() {
    return window->grabWindow();
}

void ScreenFixture::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(window.get(), key, modifiers);
}

QQuickItem* ScreenFixture::button(const QString& text) const {
    const auto isThatButton = [&](const QQuickItem& item) {
        return item.property("text") == text && item.metaObject()->indexOfSignal("clicked()") >= 0;
    };
    QQuickItem* shown =
        firstItem([&](const QQuickItem& item) { return item.isVisible() && isThatButton(item); });
    return shown ? shown : firstItem(isThatButton);
}

void ScreenFixture::click(const QString& buttonText) {
    const QQuickItem* found = button(buttonText);
    if (!found || !found->isVisible()) {
        throw std::runtime_error("no such button: " + buttonText.toStdString());
    }
    const QPointF centre = found->mapToScene(found->boundingRect().center());
    QTest::mouseClick(window.get(), Qt::LeftButton, Qt::NoModifier, centre.toPoint());
}
