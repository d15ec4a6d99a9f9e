import QtQuick
import QtQuick.Templates as T

// A question or a message before which everything else waits. Whoever shows it closes it: it asks by dismissed() (the
// button that changes nothing, Escape, Return) or confirmed() (the button that does something, pressed on purpose).
T.Popup {
    id: root

    required property string title
    required property string message
    property string dismissText: "OK"
    // The button that does something that cannot be taken back; none where empty.
    property string destructiveText: ""

    signal confirmed
    signal dismissed

    readonly property real screenMargin: 40

    anchors.centerIn: T.Overlay.overlay
    modal: true
    focus: true
    closePolicy: T.Popup.NoAutoClose
    padding: 20
    width: Math.min(460, (root.parent?.width ?? 0) - 2 * root.screenMargin)
    height: Math.min(contentItem.implicitHeight + 2 * root.padding, (root.parent?.height ?? 0) - 2 * root.screenMargin)

    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0, 0, 0, 0.5)
    }
    background: Rectangle {
        radius: 12
        color: Style.alertFill
        border.color: Style.hairline
        border.width: 1
    }
    contentItem: AlertContent {
        focus: true
        title: root.title
        message: root.message
        dismissText: root.dismissText
        destructiveText: root.destructiveText
        onConfirmed: root.confirmed()
        onDismissed: root.dismissed()
    }
}
