import QtQuick
import QtQuick.Layouts
import Narv.Water

// Today's tally on three cards (drunk, per cent, left) above a progress bar
// with a cup riding the end of the blue.
ColumnLayout {
    id: root

    required property PrefWaterState waterState

    readonly property color blue: "#0a7aff"
    readonly property color red: "#ff3b30"
    // finishedPrecent × the bar's width, kept within the bar.
    readonly property real fillWidth: Math.min(waterState.finishedPrecent * bar.width, bar.width)

    spacing: 8

    // Inline components do not see this file's ids: each brings its palette.
    component Card: Item {
        default property alias content: column.data

        SystemPalette {
            id: cardPalette
        }

        Layout.fillWidth: true
        // The three cards share the row equally, whatever their texts.
        Layout.preferredWidth: 1
        Layout.preferredHeight: 55

        SoftShadow {
            anchors.fill: parent
            cornerRadius: 8
            color: Qt.rgba(cardPalette.windowText.r, cardPalette.windowText.g,
                           cardPalette.windowText.b, 0.55)
            strength: 0.5
            blur: 5
            offsetY: 3
        }

        // A touch lighter than the panel, and opaque: a shadow seen through
        // the card would grey it all over rather than lift it.
        Rectangle {
            anchors.fill: parent
            radius: 8
            color: Qt.lighter(cardPalette.window, 1.06)
        }

        Column {
            id: column
            anchors.centerIn: parent
            width: parent.width
        }
    }

    component Caption: Text {
        anchors.horizontalCenter: parent.horizontalCenter
        color: captionPalette.windowText
        font.pixelSize: 10

        SystemPalette {
            id: captionPalette
        }
    }

    // A number that shrinks to 0.8 of its size rather than overflow its card.
    component Figure: Text {
        width: parent.width - 8
        anchors.horizontalCenter: parent.horizontalCenter
        horizontalAlignment: Text.AlignHCenter
        font.bold: true
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: Math.floor(font.pixelSize * 0.8)
        textFormat: Text.PlainText
    }

    SystemPalette {
        id: system
    }

    RowLayout {
        Layout.fillWidth: true
        Layout.bottomMargin: 8
        spacing: 12

        Card {
            Caption {
                text: qsTranslate("Narv", "Finished/ml")
            }
            Figure {
                objectName: "finished"
                text: root.waterState.finished
                color: root.blue
                font.pixelSize: 22
            }
        }

        Card {
            Caption {
                text: "%"
            }
            Figure {
                objectName: "percent"
                text: WaterPanel.wholePercent(root.waterState.finishedPrecent)
                color: system.windowText
                font.pixelSize: 26
            }
        }

        Card {
            Caption {
                visible: root.waterState.remain > 0
                text: qsTranslate("Narv", "Remain/ml")
            }
            Figure {
                objectName: "remain"
                visible: root.waterState.remain > 0
                text: root.waterState.remain
                color: root.red
                font.pixelSize: 22
            }
            // Shown from the moment the target is reached until the day ends.
            Text {
                objectName: "wellDone"
                visible: root.waterState.remain <= 0
                width: parent.width - 16
                anchors.horizontalCenter: parent.horizontalCenter
                horizontalAlignment: Text.AlignHCenter
                text: qsTranslate("Narv", "Well Done!")
                color: root.red
                font.pixelSize: 17
                font.bold: true
                fontSizeMode: Text.HorizontalFit
                minimumPixelSize: Math.floor(font.pixelSize * 0.6)
            }
        }
    }

    Item {
        id: bar
        objectName: "bar"
        Layout.fillWidth: true
        Layout.preferredHeight: 8

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            color: Qt.rgba(0.5, 0.5, 0.5, 0.1)
        }

        Rectangle {
            objectName: "fill"
            height: parent.height
            width: root.fillWidth
            radius: height / 2
            color: root.blue

            Behavior on width {
                NumberAnimation {
                    duration: 500
                    easing.type: Easing.Bezier
                    easing.bezierCurve: [0.42, 0, 0.58, 1, 1, 1]
                }
            }
        }

        // Sits above the end of the blue, and never leaves the bar to the left.
        Canvas {
            id: cup
            objectName: "cup"
            x: Math.max(root.fillWidth - 15, 0)
            y: -15
            width: 18
            height: 14
            opacity: 0.3
            Accessible.name: "cup.and.saucer.fill"

            readonly property color ink: system.windowText
            onInkChanged: requestPaint()

            onPaint: {
                const ctx = getContext("2d");
                ctx.reset();
                ctx.fillStyle = ink;
                // The cup: straight sides, a rounded bottom.
                ctx.beginPath();
                ctx.moveTo(2, 1);
                ctx.lineTo(13, 1);
                ctx.lineTo(13, 6);
                ctx.quadraticCurveTo(13, 11, 7.5, 11);
                ctx.quadraticCurveTo(2, 11, 2, 6);
                ctx.closePath();
                ctx.fill();
                // The handle.
                ctx.strokeStyle = ink;
                ctx.lineWidth = 1.6;
                ctx.beginPath();
                ctx.arc(13.5, 4.5, 2.6, -Math.PI / 2, Math.PI / 2, false);
                ctx.stroke();
                // The saucer.
                ctx.beginPath();
                ctx.moveTo(0, 12);
                ctx.lineTo(18, 12);
                ctx.quadraticCurveTo(17, 14, 15, 14);
                ctx.lineTo(3, 14);
                ctx.quadraticCurveTo(1, 14, 0, 12);
                ctx.closePath();
                ctx.fill();
            }

            Behavior on x {
                NumberAnimation {
                    duration: 500
                    easing.type: Easing.Bezier
                    easing.bezierCurve: [0.42, 0, 0.58, 1, 1, 1]
                }
            }
        }
    }
}
