import QtQuick

// The verdict stamp over the photo; nothing over one that is not yet decided.
Item {
    id: root

    required property bool isApproved
    required property bool isRejected

    readonly property color stampColor: root.isApproved ? Style.green : Style.red

    visible: root.isApproved || root.isRejected

    Rectangle {
        // The stroke lies half inside and half outside of the line that is inset by 8.
        anchors.fill: parent
        anchors.margins: 8 - border.width / 2
        color: "transparent"
        radius: 16 + border.width / 2
        border.width: 6
        border.color: Qt.alpha(root.stampColor, 0.6)
    }
    Text {
        anchors.centerIn: parent
        text: root.isApproved ? "APPROVED" : "REJECTED"
        rotation: root.isApproved ? -15 : 15
        color: Qt.alpha(root.stampColor, 0.5)
        font.pixelSize: 48
        font.weight: Font.ExtraBold
        Accessible.ignored: true
    }
}
