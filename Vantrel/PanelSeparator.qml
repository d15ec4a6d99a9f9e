import QtQuick

// The bar between two texts of a panel.
Text {
    anchors.verticalCenter: parent?.verticalCenter
    text: "|"
    color: Style.secondary
    opacity: 0.4
    font.pixelSize: Style.bodySize
    Accessible.ignored: true
}
