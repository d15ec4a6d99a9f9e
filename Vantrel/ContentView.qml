import QtQuick
import Vantrel

// The one screen: the current photo on black with its verdict, the floating panels over it, and the two alerts.
ScreenKeys {
    id: root

    required property TaskScheduler taskScheduler
    readonly property alias resolutionInfo: image.resolutionInfo
    readonly property real leastGap: 8
    readonly property bool hasPhotos: root.viewModel.photoCount > 0
    readonly property bool showsPhoto: root.hasPhotos && root.viewModel.hasCurrentImage
    readonly property bool isAsking: rawSyncAlert.visible || errorAlert.visible

    imageView: image
    photo: contentLayer
    focus: true
    onIsAskingChanged: if (!root.isAsking) contentLayer.forceActiveFocus()

    Item {
        id: contentLayer

        objectName: "contentLayer"
        anchors.fill: parent
        enabled: !root.isAsking
        focus: true
        activeFocusOnTab: true
        Accessible.role: Accessible.Graphic
        Accessible.ignored: root.isAsking
        Accessible.name: root.hasPhotos ? root.viewModel.currentPhotoDescription : root.viewModel.hasFolder ? noImages.text : empty.text
        Accessible.onNextPageAction: root.viewModel.nextPhoto()
        Accessible.onPreviousPageAction: root.viewModel.previousPhoto()
        Accessible.onPressAction: root.viewModel.toggleApproved()
        Accessible.onToggleAction: root.viewModel.cycleState()
        Accessible.onIncreaseAction: image.zoom(1)
        Accessible.onDecreaseAction: image.zoom(-1)

        Rectangle {
            anchors.fill: parent
            color: "black"
        }
        ZoomableImageView {
            id: image

            objectName: "imageView"
            anchors.fill: parent
            visible: root.showsPhoto
            taskScheduler: root.taskScheduler
            image: root.viewModel.currentImage
            keepZoom: root.viewModel.isLockZoomFeatureEnabled && root.viewModel.keepZoom
            fullResURL: root.viewModel.currentURL

            StateOverlay {
                objectName: "stateOverlay"
                anchors.fill: parent
                isApproved: root.viewModel.isCurrentApproved
                isRejected: root.viewModel.isCurrentRejected
            }
        }
        NoImagesMessage {
            id: noImages

            objectName: "noImagesMessage"
            anchors.centerIn: parent
            visible: !root.showsPhoto && root.viewModel.hasFolder
        }
        EmptyState {
            id: empty

            objectName: "emptyState"
            anchors.centerIn: parent
            visible: !root.showsPhoto && !root.viewModel.hasFolder
        }
    }

    Item {
        anchors.fill: parent
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        anchors.topMargin: 8
        anchors.bottomMargin: 8
        enabled: !root.isAsking

        FloatingLeftToolbar {
            objectName: "floatingLeftToolbar"
            anchors.left: parent.left
            anchors.top: parent.top
            backdrop: contentLayer
            viewModel: root.viewModel
            maximumWidth: parent.width - rightToolbar.width - root.leastGap
        }
        FloatingRightToolbar {
            id: rightToolbar

            objectName: "floatingRightToolbar"
            anchors.right: parent.right
            anchors.top: parent.top
            backdrop: contentLayer
            viewModel: root.viewModel
        }
        FloatingStatusBar {
            objectName: "floatingStatusBar"
            anchors.left: parent.left
            anchors.bottom: parent.bottom
            // Above the move panel where the window is too narrow for both side by side.
            anchors.bottomMargin: width + root.leastGap + movePanel.width <= parent.width ? 0 : movePanel.height + root.leastGap
            visible: root.hasPhotos
            backdrop: contentLayer
            viewModel: root.viewModel
            resolutionInfo: root.resolutionInfo
        }
        FloatingMoveRejected {
            id: movePanel

            objectName: "floatingMoveRejected"
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            visible: root.hasPhotos
            backdrop: contentLayer
            viewModel: root.viewModel
        }
    }

    Alert {
        id: rawSyncAlert

        objectName: "rawSyncAlert"
        anchors.fill: parent
        visible: root.viewModel.showRawSyncAlert
        title: "Sync RAW Files"
        message: root.viewModel.rawSyncAlertMessage
        destructiveText: root.viewModel.rawSyncAlertAsksToDelete ? "Delete" : ""
        dismissText: root.viewModel.rawSyncAlertAsksToDelete ? "Cancel" : "OK"
        onConfirmed: {
            root.viewModel.deleteOrphanRawFiles();
            root.viewModel.showRawSyncAlert = false;
        }
        onDismissed: root.viewModel.showRawSyncAlert = false
    }
    Alert {
        id: errorAlert

        objectName: "errorAlert"
        anchors.fill: parent
        visible: root.viewModel.hasErrorMessage && !root.viewModel.showRawSyncAlert
        title: "Error"
        message: root.viewModel.errorText
        onDismissed: root.viewModel.clearErrorMessage()
    }
}
