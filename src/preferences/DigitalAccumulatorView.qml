import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.Preferences

// A number with a minus and a plus button that step it by `delta`. There are
// no bounds: it goes below zero, or as high as 64 bits hold.
RowLayout {
    id: root

    // The number stepped: the property `name` of `object`.
    property alias object: value.object
    property alias name: value.name
    property int delta: 1

    spacing: 4

    IntegerBinding {
        id: value
    }

    Button {
        objectName: "minus"
        icon.source: "icons/minus.svg"
        icon.color: palette.buttonText
        icon.width: 12
        icon.height: 12
        display: AbstractButton.IconOnly
        implicitWidth: implicitHeight
        Accessible.name: "minus"
        onClicked: value.add(-root.delta)
    }

    NumberTextField {
        objectName: "field"
        binding: value
    }

    Button {
        objectName: "plus"
        icon.source: "icons/plus.svg"
        icon.color: palette.buttonText
        icon.width: 12
        icon.height: 12
        display: AbstractButton.IconOnly
        implicitWidth: implicitHeight
        Accessible.name: "plus"
        onClicked: value.add(root.delta)
    }
}
