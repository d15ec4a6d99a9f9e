import QtQuick
import Vantrel

// Names the current file and the resolution on screen.
FloatingPanel {
    id: root

    required property CullingViewModel viewModel
    required property string resolutionInfo

    name: "Photo"
    sideMargin: 16

    Text {
        anchors.verticalCenter: parent?.verticalCenter
        width: 200
        // The same for every name: letters of other fonts may be higher, and the panel is not to jump.
        height: Style.bodyHeight
        horizontalAlignment: Text.AlignLeft
        verticalAlignment: Text.AlignVCenter
        text: root.viewModel.currentPhotoTitle
        textFormat: Text.PlainText
        color: Style.primary
        elide: Text.ElideMiddle
        maximumLineCount: 1
        font.family: Style.monospaced
        font.pixelSize: Style.bodySize
        Accessible.name: "file " + root.viewModel.currentPhotoTitle
    }
    PanelSeparator {
        visible: root.resolutionInfo !== ""
    }
    Text {
        anchors.verticalCenter: parent?.verticalCenter
        visible: root.resolutionInfo !== ""
        text: root.resolutionInfo
        color: Style.secondary
        font.family: Style.monospaced
        font.pixelSize: Style.captionSize
        Accessible.name: "resolution " + root.resolutionInfo
    }
}
