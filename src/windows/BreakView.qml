import QtQuick
import Narv.Windows

// The content of every break window: the prompt, the break countdown, the
// water reminder's promotion and, when the break may be skipped, "Skip". All
// break windows show the same shared states.
Rectangle {
    id: root

    readonly property PromptState promptState: BreakScreen.promptState
    readonly property TicktackState breakState: BreakScreen.breakState
    readonly property color accent: "#0a7aff"
    readonly property color secondary: Qt.rgba(system.windowText.r, system.windowText.g,
                                               system.windowText.b, 0.55)

    function skipAction() {
        BreakScreen.skipAction();
    }

    // A prompt typed in the settings writes a line break as backslash + n.
    function promptText(prompt: string): string {
        return prompt.replace(/\\n/g, "\n");
    }

    color: system.window

    SystemPalette {
        id: system
    }

    Column {
        anchors.centerIn: parent
        width: Math.min(implicitWidth, root.width)

        Text {
            id: prompt
            objectName: "prompt"
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(implicitWidth, root.width - 2 * padding)
            padding: 16
            text: root.promptText(root.promptState.prompt)
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            // Centred line by line: the implicit width of a text with line
            // breaks is that of its longest paragraph run together, so the
            // block can be wider than its lines.
            horizontalAlignment: Text.AlignHCenter
            color: root.secondary
            font.pixelSize: 40
            font.bold: true
        }

        Item {
            width: 1
            height: 80
        }

        TicktackView {
            objectName: "countdown"
            anchors.horizontalCenter: parent.horizontalCenter
            ticktackState: root.breakState

            // Every break view ends the break when its countdown runs out.
            Connections {
                target: root.breakState
                function onTimesUpChanged() {
                    if (root.breakState.timesUp)
                        root.skipAction();
                }
            }
        }

        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            topPadding: 24
            spacing: 48

            Column {
                objectName: "promotion"
                spacing: 4

                Text {
                    text: qsTranslate("Narv", "New Feature:")
                    color: system.windowText
                    font.pixelSize: 15
                }

                Row {
                    id: waterReminder
                    objectName: "waterReminder"
                    spacing: 4
                    Accessible.role: Accessible.Link
                    Accessible.name: qsTranslate("Narv", "Water Reminder")

                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        text: qsTranslate("Narv", "Water Reminder")
                        color: root.accent
                        font.pixelSize: 15
                        font.bold: true
                        font.underline: true
                    }

                    Image {
                        anchors.verticalCenter: parent.verticalCenter
                        source: "chevron.forward.svg"
                        sourceSize.width: 8
                        sourceSize.height: 13
                        Accessible.name: "chevron.forward"
                    }

                    TapHandler {
                        longPressThreshold: 3600
                        onTapped: BreakScreen.openWaterReminder()
                    }

                    HoverHandler {
                        cursorShape: Qt.PointingHandCursor
                    }
                }

                Text {
                    text: qsTranslate("Narv", "You can enable it in the preference panel.")
                    color: root.secondary
                    font.pixelSize: 12
                }
            }

            // Absent, not just disabled, when the break may not be skipped: a
            // hidden item takes no room in the row and gets no clicks. A capsule
            // of our own rather than a Qt Quick Controls button: the controls'
            // library would stay in the process for the rest of its life. It
            // takes no keyboard focus: Return and Space belong to nobody during
            // a break.
            Rectangle {
                id: skip
                objectName: "skip"
                visible: root.promptState.showSkipButton
                implicitWidth: skipLabel.implicitWidth + 32
                implicitHeight: skipLabel.implicitHeight + 16
                radius: height / 2
                color: skipTap.pressed ? Qt.darker(root.accent, 1.2) : root.accent
                Accessible.role: Accessible.Button
                Accessible.name: skipLabel.text
                Accessible.onPressAction: root.skipAction()

                Text {
                    id: skipLabel
                    anchors.centerIn: parent
                    text: qsTranslate("Narv", "Skip")
                    color: "white"
                    font.pixelSize: 17
                    font.bold: true
                }

                // Like a button: the click counts where the press ends on it,
                // however long it was held (TapHandler's own limit is 0.8 s: a
                // slow click, or one whose release reaches a busy process late,
                // would be lost).
                TapHandler {
                    id: skipTap
                    gesturePolicy: TapHandler.ReleaseWithinBounds
                    longPressThreshold: 3600
                    onTapped: root.skipAction()
                }
            }

            // Only with postponing on, and never on a forced long break: an
            // outlined capsule beside "Skip", the lesser of the two.
            Rectangle {
                objectName: "postpone"
                visible: root.promptState.showPostponeButton
                implicitWidth: postponeLabel.implicitWidth + 32
                implicitHeight: postponeLabel.implicitHeight + 16
                radius: height / 2
                color: postponeTap.pressed ? Qt.rgba(root.accent.r, root.accent.g, root.accent.b,
                                                     0.15) : "transparent"
                border.color: root.accent
                border.width: 2
                Accessible.role: Accessible.Button
                Accessible.name: postponeLabel.text
                Accessible.onPressAction: BreakScreen.postponeAction()

                Text {
                    id: postponeLabel
                    anchors.centerIn: parent
                    text: qsTranslate("Narv", "Postpone")
                    color: root.accent
                    font.pixelSize: 17
                    font.bold: true
                }

                TapHandler {
                    id: postponeTap
                    gesturePolicy: TapHandler.ReleaseWithinBounds
                    longPressThreshold: 3600
                    onTapped: BreakScreen.postponeAction()
                }
            }
        }
    }
}
