#include "Vantrel/Control.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QKeyEvent>
#include <QQuickWindow>

namespace {

/// What accessibility asks of a control.
class ControlInterface final : public QAccessibleObject, public QAccessibleActionInterface {
public:
    explicit ControlInterface(Control& control) : QAccessibleObject(&control) {}

    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QWindow* window() const override { return control().window(); }

    QString text(QAccessible::Text text) const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    QRect rect() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override;
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString& name) const override;

private:
    Control& control() const { return *static_cast<Control*>(object()); }
};

/// The nearest item around the control that is accessible, or its window.
QAccessibleInterface* ControlInterface::parent() const {
    for (QQuickItem* item = control().parentItem(); item; item = item->parentItem()) {
        if (QAccessibleInterface* found = QAccessible::queryAccessibleInterface(item)) {
            return found;
        }
    }
    return QAccessible::queryAccessibleInterface(control().window());
}

QString ControlInterface::text(QAccessible::Text text) const {
    switch (text) {
    case QAccessible::Name:
        return control().text();
    case QAccessible::Description:
    case QAccessible::Accelerator:
        return control().shortcut();
    default:
        return {};
    }
}

QAccessible::Role ControlInterface::role() const {
    return control().isCheckable() ? QAccessible::CheckBox : QAccessible::Button;
}

QAccessible::State ControlInterface::state() const {
    QAccessible::State state;
    state.disabled = !control().isEnabled();
    state.invisible = !control().isVisible();
    state.focusable = control().isEnabled() && control().isVisible();
    state.focused = control().hasActiveFocus();
    state.checkable = control().isCheckable();
    state.checked = control().isChecked();
    return state;
}

QRect ControlInterface::rect() const {
    const QRectF inScene = control().mapRectToScene(control().boundingRect());
    return control().window() ? inScene.translated(control().window()->position()).toRect() : QRect();
}

void* ControlInterface::interface_cast(QAccessible::InterfaceType type) {
    return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
}

QStringList ControlInterface::actionNames() const {
    if (!control().isEnabled() || !control().isVisible()) {
        return {};
    }
    QStringList names{pressAction(), setFocusAction()};
    if (control().isCheckable()) {
        names.prepend(toggleAction());
    }
    return names;
}

void ControlInterface::doAction(const QString& name) {
    if (!actionNames().contains(name)) {
        return;
    }
    if (name == setFocusAction()) {
        control().forceActiveFocus();
        return;
    }
    // Later: who asked is not to wait until a chooser that the click opens is closed.
    QMetaObject::invokeMethod(&control(), &Control::clicked, Qt::QueuedConnection);
}

QStringList ControlInterface::keyBindingsForAction(const QString& name) const {
    const bool isTheKeysAction = name == pressAction() && !control().shortcut().isEmpty();
    return isTheKeysAction ? QStringList{control().shortcut()} : QStringList();
}

QAccessibleInterface* makeControlInterface(const QString& className, QObject* object) {
    auto* control = className == QLatin1String(Control::staticMetaObject.className())
                        ? qobject_cast<Control*>(object)
                        : nullptr;
    return control ? new ControlInterface(*control) : nullptr; // owned by the toolkit
}

} // namespace

Control::Control(QQuickItem* parent) : QQuickItem(parent) {
    connect(this, &Control::textChanged, this, &Control::tellName);
    connect(this, &Control::isCheckedChanged, this, &Control::tellChecked);
}

void Control::installAccessibility() {
    QAccessible::installFactory(makeControlInterface);
}

void Control::tellName() {
    QAccessibleEvent event(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

void Control::tellChecked() {
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void Control::keyPressEvent(QKeyEvent* event) {
    const bool isClick =
        event->key() == Qt::Key_Space || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isBare = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    event->setAccepted(isClick && isBare);
    if (isClick && isBare && !event->isAutoRepeat()) {
        emit clicked();
    }
}

void Control::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemEnabledHasChanged) {
        QAccessible::State changed;
        changed.disabled = true;
        changed.focusable = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
}
