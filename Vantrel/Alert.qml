import QtQuick
import Vantrel

// A question or a message before which everything else waits: it has the keys and the pointer while it is visible.
// Whoever shows it closes it, and disables what it covers: it asks by dismissed() (the button that changes nothing, Escape,
// Return) or confirmed() (the button that does something, pressed on purpose).
AlertKeys {
    id: root

    required property string title
    required property string message
    property string dismissText: "OK"
    // The button that does something that cannot be taken back; none where empty.
    property string destructiveText: ""

    signal confirmed

    readonly property real screenMargin: 40
    readonly property real padding: 20

    // Also where it is there from the start.
    Component.onCompleted: if (root.visible) content.start()
    onVisibleChanged: if (root.visible) content.start()

    Rectangle {
        anchors.fill: parent
        color: Qt.rgba(0, 0, 0, 0.5)
    }
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }
    PanelFrame {
        anchors.centerIn: parent
        width: Math.min(460, root.width - 2 * root.screenMargin)
        height: Math.min(content.implicitHeight + 2 * root.padding, root.height - 2 * root.screenMargin)
        radius: 12
        fill: Style.alertFill
        Accessible.role: Accessible.AlertMessage
        Accessible.name: root.title
        Accessible.description: root.message

        AlertContent {
            id: content

            anchors.fill: parent
            anchors.margins: root.padding
            focus: true
            title: root.title
            message: root.message
            dismissText: root.dismissText
            destructiveText: root.destructiveText
            onConfirmed: root.confirmed()
            onDismissed: root.dismissed()
        }
    }
}
