import QtQuick
import Vantrel

// A panel that floats over the picture around one row. What is behind it shines through: blurred, where there is a
// graphics processor to do it.
Item {
    id: root

    // What lies behind the panel, drawn in the coordinates of the panel's parent and its margins.
    required property Item backdrop
    required property string name
    property int sideMargin: 14
    readonly property int endMargin: 8
    readonly property alias spacing: row.spacing
    default property alias content: row.data

    implicitWidth: row.implicitWidth + 2 * root.sideMargin
    implicitHeight: row.implicitHeight + 2 * root.endMargin
    Accessible.role: Accessible.ToolBar
    Accessible.name: root.name

    BlurredBackdrop {
        anchors.fill: parent
        visible: GraphicsInfo.api !== GraphicsInfo.Software && GraphicsInfo.api !== GraphicsInfo.Unknown
        backdrop: root.backdrop
        place: Qt.point(root.x + root.parent.x, root.y + root.parent.y)
        radius: Style.panelRadius
    }
    PanelFrame {
        anchors.fill: parent
        fill: Style.panelFill
        radius: Style.panelRadius
    }
    // Clicks and the wheel on the panel are not for the photo behind it.
    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }
    Row {
        id: row

        anchors.centerIn: parent
        spacing: Style.panelSpacing
    }
}
