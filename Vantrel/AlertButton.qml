import QtQuick
import QtQuick.Templates as T

// A button of an alert.
T.Button {
    id: root

    property color textColor: Style.primary

    implicitWidth: Math.max(84, contentItem.implicitWidth + leftPadding + rightPadding)
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    horizontalPadding: 16
    verticalPadding: 7
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: Text {
        text: root.text
        color: root.textColor
        font.pixelSize: Style.bodySize
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: Style.buttonRadius
        color: root.down ? Style.buttonFillPressed : root.hovered ? Style.buttonFillHovered : Style.buttonFill
        border.width: root.visualFocus ? 2 : 0
        border.color: Style.focusRing
    }
}
