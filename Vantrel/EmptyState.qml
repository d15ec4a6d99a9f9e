import QtQuick

// What the screen says before a folder is opened.
Column {
    readonly property alias text: title.text

    spacing: 16

    SymbolImage {
        anchors.horizontalCenter: parent.horizontalCenter
        symbol: "photo.on.rectangle.angled"
        size: 48
    }
    Text {
        id: title

        anchors.horizontalCenter: parent.horizontalCenter
        text: "Open a folder to begin reviewing"
        color: Style.secondary
        font.pixelSize: Style.titleSize
    }
    Text {
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Press ⌘O or click \"Open Folder\""
        color: Style.secondary
        opacity: 0.7
        font.pixelSize: Style.captionSize
    }
}
