import QtQuick

// Shows which part of a long text is seen; drags it along.
Item {
    id: root

    required property Flickable scrolled

    readonly property real part: root.scrolled.visibleArea.heightRatio

    width: 8
    visible: root.part < 1

    Rectangle {
        id: thumb

        width: parent.width
        height: Math.max(24, root.height * root.part)
        y: (root.height - height) * root.scrolled.visibleArea.yPosition / (1 - root.part)
        radius: width / 2
        color: grip.pressed ? Style.primary : Style.secondary
        opacity: 0.6
    }
    MouseArea {
        id: grip

        property real grabbedAt: 0

        anchors.fill: parent
        onPressed: mouse => {
            const isOnThumb = mouse.y >= thumb.y && mouse.y < thumb.y + thumb.height;
            grabbedAt = isOnThumb ? mouse.y - thumb.y : thumb.height / 2;
            positionChanged(mouse);
        }
        onPositionChanged: mouse => {
            const way = Math.max(0, Math.min((mouse.y - grabbedAt) / (root.height - thumb.height), 1));
            root.scrolled.contentY = way * (root.scrolled.contentHeight - root.scrolled.height);
        }
    }
}
