import QtQuick
import Vantrel

// Where in the folder the user is, how many photos are marked, and the two moves.
FloatingPanel {
    id: root

    required property CullingViewModel viewModel

    name: "Moves"
    sideMargin: 16

    Text {
        anchors.verticalCenter: parent?.verticalCenter
        text: (root.viewModel.currentIndex + 1) + " / " + root.viewModel.photoCount
        color: Style.secondary
        font.family: Style.monospaced
        font.pixelSize: Style.bodySize
        Accessible.name: "photo " + (root.viewModel.currentIndex + 1) + " of " + root.viewModel.photoCount
    }
    PanelSeparator {}
    SymbolLabel {
        anchors.verticalCenter: parent?.verticalCenter
        symbol: "checkmark.circle.fill"
        text: root.viewModel.approvedCount
        color: Style.green
        spokenText: root.viewModel.approvedCount + " approved"
    }
    PanelSeparator {}
    SymbolLabel {
        anchors.verticalCenter: parent?.verticalCenter
        symbol: "xmark.circle.fill"
        text: root.viewModel.rejectedCount
        color: Style.red
        spokenText: root.viewModel.rejectedCount + " rejected"
    }
    PanelDivider {}
    CommandButton {
        anchors.verticalCenter: parent?.verticalCenter
        text: "Move Approved (" + root.viewModel.approvedCount + ")"
        symbol: "tray.and.arrow.up"
        shortcut: "Ctrl+A"
        isAvailable: root.viewModel.canMoveApproved
        onClicked: root.viewModel.moveApproved()
    }
    ShortcutHint {
        text: "⌘A"
    }
    PanelDivider {}
    CommandButton {
        anchors.verticalCenter: parent?.verticalCenter
        text: "Move Rejected (" + root.viewModel.rejectedCount + ")"
        symbol: "tray.and.arrow.down"
        shortcut: "Ctrl+R"
        isAvailable: root.viewModel.canMoveRejected
        onClicked: root.viewModel.moveRejected()
    }
    ShortcutHint {
        text: "⌘R"
    }
}
