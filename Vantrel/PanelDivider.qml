import QtQuick

// The line between two groups of a panel.
Rectangle {
    anchors.verticalCenter: parent?.verticalCenter
    implicitWidth: 1
    implicitHeight: 18
    color: Qt.rgba(1, 1, 1, 0.2)
}
