import QtQuick

// One of the application's symbols, sharp at any size and screen density.
Image {
    id: root

    required property string symbol
    required property int size

    source: "qrc:/qt/qml/Vantrel/Assets/" + root.symbol + ".svg"
    sourceSize.width: root.size
    sourceSize.height: root.size
    width: root.size
    height: root.size
    Accessible.ignored: true
}
