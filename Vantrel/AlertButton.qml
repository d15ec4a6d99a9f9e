import QtQuick

// A button of an alert.
Button {
    id: root

    property color textColor: Style.primary

    implicitWidth: Math.max(84, label.implicitWidth + 32)
    implicitHeight: label.implicitHeight + 14

    Rectangle {
        anchors.fill: parent
        radius: Style.buttonRadius
        color: root.isPressed ? Style.buttonFillPressed : root.isHovered ? Style.buttonFillHovered : Style.buttonFill
    }
    Text {
        id: label

        anchors.centerIn: parent
        text: root.text
        color: root.textColor
        font.pixelSize: Style.bodySize
        Accessible.ignored: true
    }
}
