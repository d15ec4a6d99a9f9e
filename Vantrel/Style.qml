pragma Singleton

import QtQuick

// Colours, fonts' sizes (in points of the screen) and measures that the whole screen shares. The texts of a panel stay
// legible, at 4.5:1 or more, over a white photo too: the fill is as dark as that takes.
QtObject {
    readonly property color primary: "#ebebeb"
    readonly property color secondary: Qt.rgba(0.92, 0.92, 0.96, 0.72)
    readonly property color green: "#30d158"
    readonly property color red: "#ff5a50"
    readonly property color panelFill: Qt.rgba(0.086, 0.086, 0.094, 0.91)
    readonly property color alertFill: "#262628"
    readonly property color hairline: Qt.rgba(1, 1, 1, 0.1)
    readonly property color toolTipBorder: Qt.rgba(1, 1, 1, 0.22)
    readonly property color buttonFill: Qt.rgba(1, 1, 1, 0.1)
    readonly property color buttonFillHovered: Qt.rgba(1, 1, 1, 0.17)
    readonly property color buttonFillPressed: Qt.rgba(1, 1, 1, 0.26)
    readonly property color destructiveFill: "#d70015"
    readonly property color destructiveFillHovered: "#de1f2a"
    readonly property color destructiveFillPressed: "#b00012"
    readonly property color focusRing: "#0a84ff"
    readonly property color selection: "#0a5ec4"

    readonly property int titleSize: 20
    readonly property int bodySize: 13
    readonly property int bodyHeight: 16
    readonly property int captionSize: 11
    readonly property string monospaced: "monospace"

    readonly property int panelSpacing: 12
    readonly property int panelRadius: 10
    readonly property int buttonRadius: 6
}
