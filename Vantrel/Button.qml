import QtQuick
import Vantrel

// What all buttons share: a press by pointer, by Space, Return or Enter, or by a screen reader. The pointer does not give
// it the keyboard focus, which only Tab does, so that a click leaves the keys where they are.
Control {
    id: root

    // Whether the command can be given; its look tells. An alert before it disables the button without that.
    property bool isAvailable: true
    readonly property bool isHovered: pointer.containsMouse && root.enabled
    readonly property bool isPressed: pointer.pressed && pointer.containsMouse

    activeFocusOnTab: true
    enabled: root.isAvailable
    Accessible.role: Accessible.Button

    MouseArea {
        id: pointer

        anchors.fill: parent
        hoverEnabled: true
        onClicked: root.clicked()
    }
    Rectangle {
        anchors.fill: parent
        anchors.margins: -3
        visible: root.activeFocus
        color: "transparent"
        radius: Style.buttonRadius + 3
        border.width: 2
        border.color: Style.focusRing
    }
}
