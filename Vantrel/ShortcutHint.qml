import QtQuick

// The short text beside a control that names its key.
Text {
    anchors.verticalCenter: parent?.verticalCenter
    color: Style.secondary
    font.pixelSize: Style.captionSize
    Accessible.ignored: true
}
