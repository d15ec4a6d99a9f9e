import QtQuick
import QtQuick.Templates as T

// Whether zoom and position stay from photo to photo: a box and its text, without a button's frame.
T.Button {
    id: root

    required property bool isChecked

    implicitWidth: contentItem.implicitWidth
    implicitHeight: contentItem.implicitHeight
    focusPolicy: Qt.NoFocus
    text: "Zoom Locked"

    contentItem: Row {
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
        }
    }

    Shortcut {
        enabled: root.visible
        sequences: ["Ctrl+L", "Meta+L"]
        autoRepeat: false
        onActivated: root.clicked()
    }
}
