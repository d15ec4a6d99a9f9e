import QtQuick
import Vantrel

// Opens a folder, and names the open one.
FloatingPanel {
    id: root

    required property CullingViewModel viewModel

    CommandButton {
        anchors.verticalCenter: parent?.verticalCenter
        text: "Open Folder"
        symbol: "folder"
        shortcutKey: "O"
        onClicked: root.viewModel.openFolder()
    }
    Text {
        anchors.verticalCenter: parent?.verticalCenter
        visible: root.viewModel.hasFolder
        width: Math.min(implicitWidth, 320)
        text: root.viewModel.folderName
        textFormat: Text.PlainText
        color: Style.secondary
        elide: Text.ElideMiddle
        maximumLineCount: 1
        font.pixelSize: Style.captionSize
    }
}
