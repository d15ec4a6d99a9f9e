import QtQuick
import Vantrel

// Opens a folder, and names the open one.
FloatingPanel {
    id: root

    required property CullingViewModel viewModel
    // Widest that the panel may be; the folder's name is shortened to it.
    required property real maximumWidth

    name: "Folder"

    CommandButton {
        id: openButton

        anchors.verticalCenter: parent?.verticalCenter
        text: "Open Folder"
        symbol: "folder"
        shortcut: "Ctrl+O"
        onClicked: root.viewModel.openFolder()
    }
    Text {
        anchors.verticalCenter: parent?.verticalCenter
        visible: root.viewModel.hasFolder
        width: Math.min(implicitWidth, root.maximumWidth - openButton.width - root.spacing - 2 * root.sideMargin)
        text: root.viewModel.folderName
        textFormat: Text.PlainText
        color: Style.secondary
        elide: Text.ElideMiddle
        maximumLineCount: 1
        font.pixelSize: Style.captionSize
        Accessible.name: "folder " + root.viewModel.folderName
    }
}
