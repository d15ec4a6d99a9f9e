import QtQuick

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
    readonly property real spaceAboveButtons: 20

    // Wherever they were when the alert was last open: the text is at its beginning, and the button that changes nothing has
    // the focus.
    function start() {
        messageText.deselect();
        scroller.contentY = 0;
        dismissButton.forceActiveFocus();
    }

    implicitHeight: titleText.height + root.spacing + messageText.implicitHeight + root.spaceAboveButtons + buttons.height

    Keys.onUpPressed: scroller.scroll(-scroller.line)
    Keys.onDownPressed: scroller.scroll(scroller.line)
    Keys.onPressed: event => {
        const way = {[Qt.Key_PageUp]: -scroller.height, [Qt.Key_PageDown]: scroller.height,
            [Qt.Key_Home]: -scroller.contentHeight, [Qt.Key_End]: scroller.contentHeight}[event.key];
        event.accepted = way !== undefined;
        scroller.scroll(way ?? 0);
    }

    Text {
        id: titleText

        anchors.left: parent.left
        anchors.right: parent.right
        text: root.title
        color: Style.primary
        font.pixelSize: Style.bodySize + 2
        font.bold: true
        Accessible.ignored: true
    }
    Flickable {
        id: scroller

        readonly property real line: 3 * Style.bodySize

        function scroll(way: real) {
            contentY = Math.max(0, Math.min(contentY + way, contentHeight - height));
        }

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: titleText.bottom
        anchors.bottom: buttons.top
        anchors.topMargin: root.spacing
        anchors.bottomMargin: root.spaceAboveButtons
        contentWidth: width
        contentHeight: messageText.implicitHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds

        TextEdit {
            id: messageText

            objectName: "alertMessage"
            width: scroller.width - scrollBar.width - 4
            text: root.message
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            readOnly: true
            selectByMouse: true
            activeFocusOnTab: true
            color: Style.primary
            selectionColor: Style.selection
            selectedTextColor: Style.primary
            font.pixelSize: Style.bodySize
            Accessible.role: Accessible.StaticText
            Accessible.name: root.message
        }
    }
    // The text has the keyboard focus.
    Rectangle {
        objectName: "alertMessageRing"
        anchors.fill: scroller
        anchors.margins: -4
        visible: messageText.activeFocus
        color: "transparent"
        radius: Style.buttonRadius
        border.width: 2
        border.color: Style.focusRing
    }
    // Where the text goes on below.
    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: scroller.bottom
        height: 1
        visible: scrollBar.visible
        color: Style.hairline
    }
    ScrollBar {
        id: scrollBar

        objectName: "alertScrollBar"
        anchors.right: parent.right
        anchors.top: scroller.top
        anchors.bottom: scroller.bottom
        scrolled: scroller
    }
    Row {
        id: buttons

        anchors.right: parent.right
        anchors.bottom: parent.bottom
        layoutDirection: Qt.RightToLeft
        spacing: 10

        AlertButton {
            id: dismissButton

            focus: true
            text: root.dismissText
            KeyNavigation.left: deleteButton
            onClicked: root.dismissed()
        }
        AlertButton {
            id: deleteButton

            visible: root.destructiveText !== ""
            KeyNavigation.right: dismissButton
            text: root.destructiveText
            isDestructive: true
            onClicked: root.confirmed()
        }
    }
}
