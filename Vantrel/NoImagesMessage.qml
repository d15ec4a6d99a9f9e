import QtQuick

// What the screen says where a folder is open and there is no picture to show.
Column {
    readonly property alias text: message.text

    spacing: 12

    SymbolImage {
        anchors.horizontalCenter: parent.horizontalCenter
        symbol: "photo.on.rectangle.angled"
        size: 40
    }
    Text {
        id: message

        anchors.horizontalCenter: parent.horizontalCenter
        text: "No JPG images found in this folder."
        color: Style.secondary
        font.pixelSize: Style.bodySize
    }
}
