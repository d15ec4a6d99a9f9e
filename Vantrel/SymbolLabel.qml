import QtQuick

// A symbol and a text beside it.
Row {
    id: root

    required property string symbol
    required property string text
    property color color: Style.primary
    // What a screen reader says of it; nothing where the label is a part of a control that speaks for itself.
    property string spokenText: ""

    spacing: 6

    SymbolImage {
        anchors.verticalCenter: parent.verticalCenter
        symbol: root.symbol
        size: 16
    }
    Text {
        anchors.verticalCenter: parent.verticalCenter
        text: root.text
        textFormat: Text.PlainText
        color: root.color
        font.pixelSize: Style.bodySize
        Accessible.ignored: root.spokenText === ""
        Accessible.name: root.spokenText
    }
}
