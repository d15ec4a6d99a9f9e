import QtQuick
import Vantrel

// Where in the folder the user is, how many photos are marked, and the two moves.
FloatingPanel {
    id: root

    required property CullingViewModel viewModel

    sideMargin: 16

    Text {
        anchors.verticalCenter: parent?.verticalCenter
        text: (root.viewModel.currentIndex + 1) + " / " + root.viewModel.photoCount
        color: Style.secondary
        font.family: Style.monospaced
        font.pixelSize: Style.bodySize
    }
    PanelSeparator {}
    SymbolLabel {
        anchors.verticalCenter: parent?.verticalCenter
        symbol: "checkmark.circle.fill"
        text: root.viewModel.approvedCount
        color: Style.green
    }
    PanelSeparator {}
    SymbolLabel {
        anchors.verticalCenter: parent?.verticalCenter
        symbol: "xmark.circle.fill"
        text: root.viewModel.rejectedCount
        color: Style.red
    }
    PanelDivider {}
    CommandButton {
        anchors.verticalCenter: parent?.verticalCenter
        text: "Move Approved (" + root.viewModel.approvedCount + ")"
        symbol: "tray.and.arrow.up"
        shortcutKey: "A"
        enabled: root.viewModel.approvedCount >= 1
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
        shortcutKey: "R"
        enabled: root.viewModel.rejectedCount >= 1
        onClicked: root.viewModel.moveRejected()
    }
    ShortcutHint {
        text: "⌘R"
    }
}
