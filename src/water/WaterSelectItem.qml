import QtQuick

// One chip: an amount in the water panel, an interval in the settings. A
// capsule with its text centred, sized by the text.
//
// The chip draws no highlight of its own. The view that lays the chips out owns
// a single blue highlight that slides from chip to chip, placed below them;
// a selected chip lets its own capsule fade out, so the highlight shows
// through, and turns its text white to stand out on the blue.
Item {
    id: root

    property string text
    property bool isSelected

    signal clicked

    readonly property color secondary: Qt.rgba(system.windowText.r, system.windowText.g,
                                               system.windowText.b, 0.55)

    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 10

    Accessible.role: Accessible.RadioButton
    Accessible.name: root.text
    Accessible.checked: root.isSelected

    SystemPalette {
        id: system
    }

    Item {
        anchors.fill: parent
        opacity: root.isSelected ? 0 : 1

        Behavior on opacity {
            NumberAnimation {
                duration: 350
                easing.type: Easing.InOutQuad
            }
        }

        SoftShadow {
            anchors.fill: parent
            cornerRadius: height / 2
            color: root.secondary
            strength: 0.5
            blur: 3
            offsetY: 3
        }

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            // Opaque, so that its shadow only shows around it.
            color: Qt.lighter(system.window, 1.06)
        }
    }

    Text {
        id: label
        anchors.centerIn: parent
        text: root.text
        textFormat: Text.PlainText
        color: root.isSelected ? "white" : system.windowText
        font.pixelSize: 15
    }

    TapHandler {
        longPressThreshold: 3600
        onTapped: root.clicked()
    }

    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }
}
