import QtQuick
import Narv.Water

// "Skip" and "Done". "Done" adds the chosen amount at once and closes the
// panel half a second later, so the new tally is seen before it goes.
Item {
    id: root

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight

    // A capsule of our own rather than a Qt Quick Controls button, whose
    // library would stay in the process for good once the panel has been
    // shown. It takes no keyboard focus: the panel's one key is Escape.
    component ActionButton: Item {
        id: button

        property string text
        property color textColor
        property color fillColor

        signal clicked

        implicitWidth: label.implicitWidth + 32
        implicitHeight: label.implicitHeight + 10
        opacity: tap.pressed ? 0.7 : 1
        Accessible.role: Accessible.Button
        Accessible.name: button.text
        Accessible.onPressAction: button.clicked()

        SystemPalette {
            id: buttonPalette
        }

        SoftShadow {
            anchors.fill: parent
            cornerRadius: height / 2
            color: Qt.rgba(buttonPalette.windowText.r, buttonPalette.windowText.g,
                           buttonPalette.windowText.b, 0.55)
            strength: 0.2
            blur: 3
            offsetY: 3
        }

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            color: button.fillColor
        }

        Text {
            id: label
            anchors.centerIn: parent
            text: button.text
            color: button.textColor
            font.pixelSize: 13
        }

        // The click counts where the press ends on the button, however long
        // it was held: a slow click, or one whose release reaches a busy
        // process late, is still a click.
        TapHandler {
            id: tap
            gesturePolicy: TapHandler.ReleaseWithinBounds
            longPressThreshold: 3600
            // A press that turns into a drag stays the button's: it does not
            // move the panel.
            grabPermissions: PointerHandler.TakeOverForbidden
            onTapped: button.clicked()
        }
    }

    SystemPalette {
        id: system
    }

    Row {
        id: row
        anchors.horizontalCenter: parent.horizontalCenter

        ActionButton {
            objectName: "skip"
            anchors.verticalCenter: parent.verticalCenter
            text: qsTranslate("Narv", "Skip")
            textColor: "#ff3b30"
            fillColor: Qt.lighter(system.window, 1.06)
            onClicked: WaterPanel.skipAction()
        }

        Item {
            anchors.verticalCenter: parent.verticalCenter
            width: 10
            height: 20

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: 1
                height: parent.height
                color: Qt.rgba(system.windowText.r, system.windowText.g, system.windowText.b, 0.15)
            }
        }

        ActionButton {
            objectName: "done"
            anchors.verticalCenter: parent.verticalCenter
            text: qsTranslate("Narv", "Done")
            textColor: "white"
            fillColor: "#0a7aff"
            onClicked: WaterPanel.doneAction()
        }
    }
}
