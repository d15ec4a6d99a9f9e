import QtQuick

// What lies behind a panel, as through frosted glass. It is drawn once more at a quarter of its size, of which a little
// blur makes a wide one. Needs shader effects, which the software renderer does not have: while invisible it draws nothing.
Item {
    id: root

    required property Item backdrop
    // The panel in the coordinates of the backdrop.
    required property point place
    required property real radius

    readonly property int reduction: 4
    // How far around the panel the blur looks, in points.
    readonly property int reach: 12 * root.reduction
    readonly property size grown: Qt.size(root.width + 2 * root.reach, root.height + 2 * root.reach)
    readonly property size reducedSize: Qt.size(Math.ceil(root.grown.width / root.reduction),
                                                Math.ceil(root.grown.height / root.reduction))

    ShaderEffectSource {
        id: reduced

        visible: false
        sourceItem: root.visible ? root.backdrop : null
        sourceRect: Qt.rect(root.place.x - root.reach, root.place.y - root.reach, root.grown.width, root.grown.height)
        textureSize.width: root.reducedSize.width
        textureSize.height: root.reducedSize.height
    }
    ShaderEffect {
        id: blurredAcross

        readonly property var source: reduced
        readonly property vector2d texel: Qt.vector2d(1 / root.reducedSize.width, 0)

        visible: false
        width: root.reducedSize.width
        height: root.reducedSize.height
        fragmentShader: "qrc:/qt/qml/Vantrel/Shaders/blurred.frag.qsb"
    }
    ShaderEffectSource {
        id: acrossTexture

        visible: false
        sourceItem: root.visible ? blurredAcross : null
        textureSize.width: root.reducedSize.width
        textureSize.height: root.reducedSize.height
    }
    ShaderEffect {
        readonly property var source: acrossTexture
        readonly property vector2d texel: Qt.vector2d(0, 1 / root.reducedSize.height)
        readonly property vector4d part: Qt.vector4d(root.reach / root.grown.width, root.reach / root.grown.height,
                                                     root.width / root.grown.width, root.height / root.grown.height)
        readonly property vector2d size: Qt.vector2d(root.width, root.height)
        readonly property real cornerExtent: 1.5 * root.radius
        readonly property real pixelsPerPoint: Screen.devicePixelRatio

        anchors.fill: parent
        fragmentShader: "qrc:/qt/qml/Vantrel/Shaders/frosted.frag.qsb"
    }
}
