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

        SymbolImage {
            anchors.verticalCenter: parent.verticalCenter
            symbol: root.isChecked ? "check" : "box"
            size: 14
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
