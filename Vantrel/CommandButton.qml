pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T

// A button with a symbol and a text, and the shortcut that does the same while the button can be pressed: Control or
// Super with shortcutKey. It never takes the keyboard focus, so that the review keys go on working.
T.Button {
    id: root

    required property string symbol
    property string shortcutKey: ""
    readonly property string toolTip: root.shortcutKey === "" ? root.text : root.text + "   Ctrl+" + root.shortcutKey

    implicitWidth: leftPadding + contentItem.implicitWidth + rightPadding
    implicitHeight: topPadding + contentItem.implicitHeight + bottomPadding
    horizontalPadding: 10
    verticalPadding: 5
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    opacity: root.enabled ? 1 : 0.38

    contentItem: SymbolLabel {
        symbol: root.symbol
        text: root.text
    }
    background: Rectangle {
        radius: Style.buttonRadius
        color: root.down ? Style.buttonFillPressed : root.hovered ? Style.buttonFillHovered : Style.buttonFill
    }

    T.ToolTip {
        visible: root.hovered
        delay: 700
        y: root.height + 8
        padding: 6
        contentItem: Text {
            text: root.toolTip
            color: Style.primary
            font.pixelSize: Style.captionSize
        }
        background: Rectangle {
            radius: Style.buttonRadius
            color: Style.alertFill
            border.width: 1
            border.color: Style.hairline
        }
    }
    Shortcut {
        enabled: root.enabled && root.visible && root.shortcutKey !== ""
        sequences: ["Ctrl+" + root.shortcutKey, "Meta+" + root.shortcutKey]
        autoRepeat: false
        onActivated: root.clicked()
    }
}
