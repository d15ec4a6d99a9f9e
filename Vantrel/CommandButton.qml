import QtQuick

// A button of a panel: a symbol, a text, and a tooltip that names the key.
Button {
    id: root

    required property string symbol

    implicitWidth: label.implicitWidth + 20
    implicitHeight: label.implicitHeight + 10
    opacity: root.isAvailable ? 1 : 0.38

    ButtonFrame {
        button: root
    }
    SymbolLabel {
        id: label

        anchors.centerIn: parent
        symbol: root.symbol
        text: root.text
    }
    ToolTip {
        text: root.text
        shortcut: root.shortcut
        isWanted: root.isHovered && !root.isPressed
    }
}
