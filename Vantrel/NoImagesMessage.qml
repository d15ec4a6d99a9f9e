import QtQuick

// What the screen says where a folder is open and there is no picture to show.
Column {
    spacing: 12

    SymbolImage {
        anchors.horizontalCenter: parent.horizontalCenter
        symbol: "photo.on.rectangle.angled"
        size: 40
    }
    Text {
        anchors.horizontalCenter: parent.horizontalCenter
        text: "No JPG images found in this folder."
        color: Style.secondary
        font.pixelSize: Style.bodySize
    }
}
