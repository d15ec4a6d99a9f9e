import QtQuick

// A button of an alert.
Button {
    id: root

    property bool isDestructive: false

    implicitWidth: Math.max(84, label.implicitWidth + 32)
    implicitHeight: label.implicitHeight + 14

    ButtonFrame {
        button: root
        fill: root.isDestructive ? Style.destructiveFill : Style.buttonFill
        fillHovered: root.isDestructive ? Style.destructiveFillHovered : Style.buttonFillHovered
        fillPressed: root.isDestructive ? Style.destructiveFillPressed : Style.buttonFillPressed
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
