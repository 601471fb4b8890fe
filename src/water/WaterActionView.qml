import QtQuick
import QtQuick.Templates as T
import Narv.Water

// "Skip" and "Done". "Done" adds the chosen amount at once and closes the
// panel half a second later, so the new tally is seen before it goes.
Item {
    id: root

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight

    component ActionButton: T.Button {
        id: button

        property color textColor
        property color fillColor

        focusPolicy: Qt.NoFocus
        topPadding: 5
        bottomPadding: 5
        leftPadding: 16
        rightPadding: 16
        implicitWidth: implicitContentWidth + leftPadding + rightPadding
        implicitHeight: implicitContentHeight + topPadding + bottomPadding
        opacity: down ? 0.7 : 1

        SystemPalette {
            id: buttonPalette
        }

        contentItem: Text {
            text: button.text
            color: button.textColor
            font.pixelSize: 13
            horizontalAlignment: Text.AlignHCenter
        }
        background: Item {
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
