import QtQuick

// A soft drop shadow for a rounded shape, put behind it with the same size.
// The windows are drawn by Qt Quick's software renderer, which runs no
// shaders, so the blur is made of translucent layers growing outwards: where
// they overlap (under the shape) the shadow is darkest.
Item {
    id: root

    property color color: "black"
    property real cornerRadius: 0
    // How dark the shadow is under the shape, 0 to 1.
    property real strength: 0.5
    property real blur: 3 // pixels over which the shadow's edge fades
    property real offsetX: 0
    property real offsetY: 0

    // Three layers, from just inside the shape's edge to half the blur beyond
    // it, so that the edge of the shadow fades as a blurred one does. Each has
    // a third of the strength; under the shape they add up to about all of it.
    Rectangle {
        readonly property real spread: -root.blur / 6

        x: root.offsetX - spread
        y: root.offsetY - spread
        width: root.width + 2 * spread
        height: root.height + 2 * spread
        radius: root.cornerRadius + spread
        color: root.color
        opacity: root.strength / 3
    }

    Rectangle {
        readonly property real spread: root.blur / 6

        x: root.offsetX - spread
        y: root.offsetY - spread
        width: root.width + 2 * spread
        height: root.height + 2 * spread
        radius: root.cornerRadius + spread
        color: root.color
        opacity: root.strength / 3
    }

    Rectangle {
        readonly property real spread: root.blur / 2

        x: root.offsetX - spread
        y: root.offsetY - spread
        width: root.width + 2 * spread
        height: root.height + 2 * spread
        radius: root.cornerRadius + spread
        color: root.color
        opacity: root.strength / 3
    }
}
