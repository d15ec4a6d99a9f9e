import QtQuick

// Whether zoom and position stay from photo to photo: a box and its text, without a button's frame.
Button {
    id: root

    text: "Zoom Locked"
    shortcut: "Ctrl+L"
    implicitWidth: content.implicitWidth
    implicitHeight: content.implicitHeight
    isCheckable: true

    Row {
        id: content

        spacing: 6

        Item {
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14

            SymbolImage {
                visible: root.isChecked
                symbol: "check"
                size: 14
            }
            Rectangle {
                anchors.fill: parent
                visible: !root.isChecked
                color: "transparent"
                radius: 3
                border.width: 1.5
                border.color: Style.secondary
            }
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: root.text
            color: Style.primary
            font.pixelSize: Style.bodySize
            Accessible.ignored: true
        }
    }
    ToolTip {
        text: root.text
        shortcut: root.shortcut
        isWanted: root.isHovered && !root.isPressed
    }
}
