import QtQuick

// Names the action of the control that it belongs to, and its key, once the pointer has rested there.
Rectangle {
    id: root

    required property string text
    required property string shortcut
    required property bool isWanted

    readonly property int gap: 14
    readonly property int screenMargin: 8
    readonly property real screenWidth: Window.width
    // Where the control stands in the window; asked anew each time it shows.
    readonly property point place: root.visible ? parent.mapToItem(null, 0, 0) : Qt.point(0, 0)
    readonly property real leftmost: root.screenMargin - root.place.x
    readonly property real rightmost: root.screenWidth - root.screenMargin - root.width - root.place.x

    x: Math.max(root.leftmost, Math.min((parent.width - root.width) / 2, root.rightmost))
    y: root.place.y < root.height + root.gap + root.screenMargin ? parent.height + root.gap : -root.height - root.gap
    z: 1
    width: label.implicitWidth + 16
    height: label.implicitHeight + 10
    visible: false
    radius: Style.buttonRadius
    color: Style.alertFill
    border.width: 1
    border.color: Style.toolTipBorder
    onIsWantedChanged: if (!root.isWanted) root.visible = false

    Timer {
        interval: 700
        running: root.isWanted
        onTriggered: root.visible = true
    }
    Row {
        id: label

        anchors.centerIn: parent
        spacing: 10

        Text {
            Accessible.ignored: true
            text: root.text
            color: Style.primary
            font.pixelSize: Style.captionSize
        }
        Text {
            Accessible.ignored: true
            visible: text !== ""
            text: root.shortcut
            color: Style.secondary
            font.pixelSize: Style.captionSize
        }
    }
}
