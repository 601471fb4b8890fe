import QtQuick
import Narv.Water

// The countdown to the next drink. It counts from the moment the reminder was
// armed, so it shows the same deadline as the job that opens the panel, and is
// started afresh whenever the panel is shown or the working hours change.
Item {
    id: root

    required property PrefWaterState waterState
    property real remainSeconds: 0 // whole seconds
    // Working hours, as last looked at: when the countdown starts, on every
    // tick and on every change of the water settings.
    property bool inWorkTime: false

    readonly property bool shown: Window.window !== null && Window.visibility !== Window.Hidden
    readonly property color secondary: Qt.rgba(system.windowText.r, system.windowText.g,
                                               system.windowText.b, 0.55)

    function updateTimer() {
        inWorkTime = waterState.inWorkTime();
        if (!inWorkTime) {
            cancelTimer();
            WaterPanel.noteNotInWorkTime();
            return;
        }
        remainSeconds = WaterPanel.secondsToNextDrink();
        ticker.restart();
    }

    function cancelTimer() {
        ticker.stop();
        remainSeconds = 0;
    }

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight

    onShownChanged: shown ? updateTimer() : cancelTimer()
    Component.onCompleted: {
        if (shown)
            updateTimer();
    }

    SystemPalette {
        id: system
    }

    Timer {
        id: ticker
        interval: 1000
        repeat: true
        onTriggered: {
            root.inWorkTime = root.waterState.inWorkTime();
            if (root.remainSeconds < 1)
                stop();
            else
                root.remainSeconds -= 1;
        }
    }

    Connections {
        target: root.waterState
        function onIntervalStartDateChanged() {
            if (root.shown)
                root.updateTimer();
        }
        function onIntervalEndDateChanged() {
            if (root.shown)
                root.updateTimer();
        }
        function onChanged() {
            root.inWorkTime = root.waterState.inWorkTime();
        }
    }

    Row {
        id: row
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, root.width)

        Text {
            id: tip
            objectName: "tip"
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, root.width - (countdown.visible ? countdown.width : 0))
            text: !root.inWorkTime ? qsTranslate("Narv", "Not in work time!")
                                   : root.remainSeconds < 1
                                     ? qsTranslate("Narv", "It's time to drink water!")
                                     : qsTranslate("Narv", "Next drink in")
            color: root.secondary
            font.pixelSize: root.remainSeconds < 1 ? 22 : 15
            font.bold: root.remainSeconds < 1
            wrapMode: Text.WordWrap
            horizontalAlignment: Text.AlignHCenter
        }

        Text {
            id: countdown
            objectName: "countdown"
            anchors.verticalCenter: parent.verticalCenter
            visible: root.remainSeconds >= 1
            leftPadding: 8
            rightPadding: 8
            text: WaterPanel.timeString(root.remainSeconds)
            color: Qt.rgba(system.windowText.r, system.windowText.g, system.windowText.b, 0.8)
            font.pixelSize: 22
        }
    }
}
