import QtQuick

// The ground of a button that has one; it tells whether the pointer is on the button and presses it.
Rectangle {
    id: root

    required property Button button
    property color fill: Style.buttonFill
    property color fillHovered: Style.buttonFillHovered
    property color fillPressed: Style.buttonFillPressed

    anchors.fill: parent
    radius: Style.buttonRadius
    color: root.button.isPressed ? root.fillPressed : root.button.isHovered ? root.fillHovered : root.fill
}
