import QtQuick
import QtQuick.Templates as T

// What stands in an alert: its title, its text, which scrolls where it is long, and its buttons below.
FocusScope {
    id: root

    required property string title
    required property string message
    required property string dismissText
    required property string destructiveText

    signal confirmed
    signal dismissed

    readonly property real spacing: 14

    implicitHeight: titleText.height + root.spacing + messageText.implicitHeight + root.spacing + buttons.height

    Keys.onEscapePressed: root.dismissed()
    Keys.onReturnPressed: root.dismissed()
    Keys.onEnterPressed: root.dismissed()

    Text {
        id: titleText

        anchors.left: parent.left
        anchors.right: parent.right
        text: root.title
        color: Style.primary
        font.pixelSize: Style.bodySize + 2
        font.bold: true
    }
    Flickable {
        id: scroller

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: titleText.bottom
        anchors.bottom: buttons.top
        anchors.topMargin: root.spacing
        anchors.bottomMargin: root.spacing
        contentWidth: width
        contentHeight: messageText.implicitHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds

        TextEdit {
            id: messageText

            width: scroller.width - (scrollBar.visible ? scrollBar.width : 0)
            text: root.message
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            readOnly: true
            selectByMouse: true
            color: Style.primary
            selectionColor: Style.focusRing
            font.pixelSize: Style.bodySize
        }
        T.ScrollBar.vertical: T.ScrollBar {
            id: scrollBar

            implicitWidth: 8
            visible: size < 1
            contentItem: Rectangle {
                radius: width / 2
                color: Style.secondary
            }
        }
    }
    Row {
        id: buttons

        anchors.right: parent.right
        anchors.bottom: parent.bottom
        layoutDirection: Qt.RightToLeft
        spacing: 8

        AlertButton {
            focus: true
            text: root.dismissText
            onClicked: root.dismissed()
        }
        AlertButton {
            visible: root.destructiveText !== ""
            text: root.destructiveText
            textColor: Style.red
            onClicked: root.confirmed()
        }
    }
}
