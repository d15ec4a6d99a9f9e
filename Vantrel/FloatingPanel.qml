import QtQuick

// A panel that floats over the picture around one row.
Rectangle {
    id: root

    property int sideMargin: 14
    readonly property int endMargin: 8
    readonly property alias spacing: row.spacing
    default property alias content: row.data

    implicitWidth: row.implicitWidth + 2 * root.sideMargin
    implicitHeight: row.implicitHeight + 2 * root.endMargin
    radius: Style.panelRadius
    color: Style.panelFill
    border.color: Style.hairline
    border.width: 1

    // Clicks and the wheel on the panel are not for the photo behind it.
    MouseArea {
        anchors.fill: parent
        onWheel: wheel => wheel.accepted = true
    }
    Row {
        id: row

        anchors.centerIn: parent
        spacing: Style.panelSpacing
    }
}
