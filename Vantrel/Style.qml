pragma Singleton

import QtQuick

// Colours, fonts' sizes (in points of the screen) and measures that the whole screen shares.
QtObject {
    readonly property color primary: "#ebebeb"
    readonly property color secondary: Qt.rgba(0.92, 0.92, 0.96, 0.62)
    readonly property color green: "#30d158"
    readonly property color red: "#ff453a"
    readonly property color panelFill: Qt.rgba(0.11, 0.11, 0.12, 0.84)
    readonly property color alertFill: "#262628"
    readonly property color hairline: Qt.rgba(1, 1, 1, 0.1)
    readonly property color buttonFill: Qt.rgba(1, 1, 1, 0.1)
    readonly property color buttonFillHovered: Qt.rgba(1, 1, 1, 0.17)
    readonly property color buttonFillPressed: Qt.rgba(1, 1, 1, 0.26)
    readonly property color focusRing: "#0a84ff"

    readonly property int titleSize: 20
    readonly property int bodySize: 13
    readonly property int captionSize: 11
    readonly property string monospaced: "monospace"

    readonly property int panelSpacing: 12
    readonly property int panelRadius: 10
    readonly property int buttonRadius: 6
}
