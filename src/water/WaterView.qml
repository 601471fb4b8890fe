import QtQuick
import QtQuick.Layouts
import Narv.Water

// The water panel: today's tally, the countdown to the next drink, the amounts
// and "Skip"/"Done". Everything it shows comes from the one shared
// PrefWaterState, so the settings window and the status menu stay in step.
Item {
    id: root

    readonly property PrefWaterState waterState: WaterPanel.waterState
    // Set by the window when a compositor can show what lies behind it;
    // without one the background is opaque.
    property bool translucent: false

    implicitWidth: WaterPanel.panelWidth
    implicitHeight: WaterPanel.panelHeight
    focus: true

    Keys.onEscapePressed: WaterPanel.closeAction()

    SystemPalette {
        id: system
    }

    Rectangle {
        objectName: "background"
        anchors.fill: parent
        radius: root.translucent ? 12 : 0
        color: root.translucent ? Qt.rgba(system.window.r, system.window.g, system.window.b, 0.86)
                                : system.window
        border.width: root.translucent ? 1 : 0
        border.color: Qt.rgba(system.windowText.r, system.windowText.g, system.windowText.b,
                              0.15)
    }

    // The panel has no title bar: it is moved by its background.
    DragHandler {
        target: null
        onActiveChanged: {
            if (active && root.Window.window)
                root.Window.window.startSystemMove();
        }
    }

    HoverHandler {
        id: hover
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 8
        spacing: 8

        WaterProgressView {
            Layout.fillWidth: true
            waterState: root.waterState
        }

        Item {
            Layout.fillHeight: true
        }

        WaterCountingView {
            Layout.fillWidth: true
            waterState: root.waterState
        }

        WaterSelectionView {
            Layout.fillWidth: true
            Layout.margins: 8
            waterState: root.waterState
        }

        WaterActionView {
            Layout.fillWidth: true
        }

        Item {
            Layout.preferredHeight: 16
        }
    }

    // Closes the panel without drinking or arming the next reminder, like a
    // window's close button; shown while the pointer is over the panel. Drawn
    // by hand rather than with Qt Quick Controls, whose library would stay in
    // the process once loaded.
    Rectangle {
        id: close
        objectName: "close"
        x: 4
        y: 4
        width: 14
        height: 14
        radius: width / 2
        opacity: hover.hovered ? 1 : 0
        color: closeHover.hovered ? "#ff5f57"
                                  : Qt.rgba(system.windowText.r, system.windowText.g,
                                            system.windowText.b, 0.25)
        Accessible.role: Accessible.Button
        Accessible.name: qsTranslate("Narv", "Close")
        Accessible.onPressAction: WaterPanel.closeAction()

        Text {
            anchors.fill: parent
            text: "×"
            color: closeHover.hovered ? "#4d0000" : system.window
            font.pixelSize: 12
            font.bold: true
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }

        HoverHandler {
            id: closeHover
        }

        TapHandler {
            gesturePolicy: TapHandler.ReleaseWithinBounds
            longPressThreshold: 3600
            // A press that turns into a drag stays the button's: it does not
            // move the panel.
            grabPermissions: PointerHandler.TakeOverForbidden
            onTapped: WaterPanel.closeAction()
        }

        Behavior on opacity {
            NumberAnimation {
                duration: 150
            }
        }
    }
}
