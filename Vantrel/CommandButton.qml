pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T

// A button with a symbol and a text, and the shortcut that does the same while the button can be pressed: Control or
// Super with shortcutKey. A click leaves the keyboard focus where it was, so that the review keys go on working.
T.Button {
    id: root

    required property string symbol
    property string shortcutKey: ""

    implicitWidth: leftPadding + contentItem.implicitWidth + rightPadding
    implicitHeight: topPadding + contentItem.implicitHeight + bottomPadding
    horizontalPadding: 10
    verticalPadding: 5
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    opacity: root.enabled ? 1 : 0.38

    contentItem: SymbolLabel {
        symbol: root.symbol
        text: root.text
    }
    background: Rectangle {
        radius: Style.buttonRadius
        color: root.down ? Style.buttonFillPressed : root.hovered ? Style.buttonFillHovered : Style.buttonFill
        border.width: root.visualFocus ? 2 : 0
        border.color: Style.focusRing
    }

    Shortcut {
        enabled: root.enabled && root.visible && root.shortcutKey !== ""
        sequences: ["Ctrl+" + root.shortcutKey, "Meta+" + root.shortcutKey]
        autoRepeat: false
        onActivated: root.clicked()
    }
}
