import QtQuick
import Vantrel

// Takes marks back; and, where their features are on, locks the zoom and looks for orphan RAW files.
FloatingPanel {
    id: root

    required property CullingViewModel viewModel

    name: "Marks"

    CommandButton {
        anchors.verticalCenter: parent?.verticalCenter
        text: "Undo"
        symbol: "arrow.uturn.backward"
        shortcut: "Ctrl+Z"
        isAvailable: root.viewModel.canUndo
        onClicked: root.viewModel.undo()
    }
    PanelDivider {
        visible: root.viewModel.isLockZoomFeatureEnabled
    }
    ZoomLockCheckbox {
        anchors.verticalCenter: parent?.verticalCenter
        visible: root.viewModel.isLockZoomFeatureEnabled
        isChecked: root.viewModel.keepZoom
        onClicked: root.viewModel.toggleKeepZoom()
    }
    ShortcutHint {
        visible: root.viewModel.isLockZoomFeatureEnabled
        text: "L"
    }
    PanelDivider {
        visible: root.viewModel.isSyncRawFeatureEnabled
    }
    CommandButton {
        anchors.verticalCenter: parent?.verticalCenter
        visible: root.viewModel.isSyncRawFeatureEnabled
        text: "Sync RAW"
        symbol: "camera.aperture"
        isAvailable: root.viewModel.canSyncRaw
        onClicked: root.viewModel.findOrphanRawFiles()
    }
}
