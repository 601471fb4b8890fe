import QtQuick
import QtQuick.Controls
import QtQuick.Controls.impl

// A check box whose box stands out in light and dark palettes alike: the
// styles draw an unticked box in a shade a step off the window's, which all
// but disappears on a dark one. The outline here is mostly the text colour.
CheckBox {
    id: box

    function faded(color, alpha) {
        return Qt.rgba(color.r, color.g, color.b, alpha);
    }

    indicator: Rectangle {
        objectName: "box"
        implicitWidth: 16
        implicitHeight: 16
        x: box.text ? (box.mirrored ? box.width - width - box.rightPadding : box.leftPadding)
                    : box.leftPadding + (box.availableWidth - width) / 2
        y: box.topPadding + (box.availableHeight - height) / 2
        radius: 2
        color: box.down ? Qt.tint(box.palette.base, box.faded(box.palette.highlight, 0.25))
                        : box.palette.base
        border.width: box.visualFocus ? 2 : 1
        border.color: box.visualFocus ? box.palette.highlight
                                      : Qt.tint(box.palette.base, box.faded(box.palette.text, 0.7))

        ColorImage {
            anchors.centerIn: parent
            width: 12
            height: 12
            source: "icons/checkmark.svg"
            color: box.palette.text
            visible: box.checkState === Qt.Checked
        }
    }
}
