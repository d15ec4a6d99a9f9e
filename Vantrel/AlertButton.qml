import QtQuick

// A button of an alert.
Button {
    id: root

    property bool isDestructive: false
    readonly property color fill: root.isDestructive ? Style.destructiveFill : Style.buttonFill
    readonly property color fillHovered: root.isDestructive ? Style.destructiveFillHovered : Style.buttonFillHovered
    readonly property color fillPressed: root.isDestructive ? Style.destructiveFillPressed : Style.buttonFillPressed

    implicitWidth: Math.max(84, label.implicitWidth + 32)
    implicitHeight: label.implicitHeight + 14

    Rectangle {
        anchors.fill: parent
        radius: Style.buttonRadius
        color: root.isPressed ? root.fillPressed : root.isHovered ? root.fillHovered : root.fill
    }
    Text {
        id: label

        anchors.centerIn: parent
        text: root.text
        color: root.isDestructive ? "white" : Style.primary
        font.pixelSize: Style.bodySize
        Accessible.ignored: true
    }
}
