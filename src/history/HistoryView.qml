pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.History

// The history window: the last 7 or 30 days as three bar charts (breaks
// taken and skipped, time worked, water against the target) and today's
// figures in words. Read again each time the window comes up.
Page {
    id: root

    readonly property var today: chart.today

    implicitWidth: 560
    implicitHeight: 520

    palette.window: system.window
    palette.windowText: system.windowText
    palette.base: system.base
    palette.text: system.text
    palette.button: system.button
    palette.buttonText: system.buttonText
    palette.highlight: system.highlight
    palette.highlightedText: system.highlightedText
    palette.mid: system.mid

    SystemPalette {
        id: system
    }

    HistoryChart {
        id: chart
        objectName: "chart"
    }

    Connections {
        target: root.Window.window
        function onVisibleChanged() {
            if (root.Window.window.visible) {
                chart.refresh();
                exported.text = "";
                week.forceActiveFocus(Qt.ActiveWindowFocusReason);
            }
        }
    }
    Component.onCompleted: chart.refresh()

    Shortcut {
        sequence: "Ctrl+W"
        onActivated: root.Window.window.close()
    }

    // One chart: a title and a bar (or two, stacked) per day.
    component Bars: ColumnLayout {
        id: bars

        required property string title
        required property string field
        property string second: ""
        required property real most
        property string unit: ""

        Layout.fillWidth: true
        Layout.fillHeight: true
        spacing: 2

        Label {
            text: bars.title
            font.bold: true
        }
        RowLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: chart.span <= 7 ? 8 : 2

            Repeater {
                model: chart.days
                delegate: ColumnLayout {
                    id: dayColumn

                    required property var modelData
                    required property int index
                    readonly property real first: bars.field === "waterShare"
                                                   ? modelData.waterShare * bars.most
                                                   : modelData[bars.field]
                    readonly property real next: bars.second === "" ? 0 : modelData[bars.second]

                    Layout.fillWidth: true
                    Layout.fillHeight: true
                    Layout.preferredWidth: 1
                    spacing: 1
                    Accessible.role: Accessible.StaticText
                    Accessible.name: modelData.label + ": " + modelData[bars.field]
                                     + (bars.second === "" ? "" : ", " + modelData[bars.second])
                                     + " " + bars.unit

                    Item {
                        Layout.fillWidth: true
                        Layout.fillHeight: true
                        Rectangle {
                            objectName: "skippedBar"
                            anchors.bottom: firstBar.top
                            width: parent.width
                            height: bars.most > 0 ? parent.height * dayColumn.next / bars.most : 0
                            color: root.palette.mid
                        }
                        Rectangle {
                            id: firstBar
                            anchors.bottom: parent.bottom
                            width: parent.width
                            height: bars.most > 0 ? parent.height * dayColumn.first / bars.most : 0
                            color: root.palette.highlight
                        }
                    }
                    Label {
                        Layout.alignment: Qt.AlignHCenter
                        text: dayColumn.modelData.label
                        font.pixelSize: 10
                        visible: chart.span <= 7 || dayColumn.index % 5 === 0
                    }
                }
            }
        }
    }

    header: ToolBar {
        RowLayout {
            anchors.fill: parent
            anchors.leftMargin: 8
            anchors.rightMargin: 8

            TabBar {
                // The buttons share the width equally.
                Layout.preferredWidth: 2 * Math.max(week.implicitWidth, month.implicitWidth) + spacing
                TabButton {
                    id: week
                    objectName: "week"
                    text: qsTranslate("Narv", "7 days")
                    checked: chart.span === 7
                    onClicked: chart.span = 7
                }
                TabButton {
                    id: month
                    objectName: "month"
                    text: qsTranslate("Narv", "30 days")
                    checked: chart.span === 30
                    onClicked: chart.span = 30
                }
            }
            Item {
                Layout.fillWidth: true
            }
            Button {
                objectName: "export"
                text: qsTranslate("Narv", "Export CSV")
                onClicked: exported.text = chart.exportCsv()
            }
        }
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 16
        spacing: 12

        Label {
            objectName: "today"
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            text: chart.problem !== "" ? chart.problem
                  : qsTranslate("Narv", "Today: %1 breaks taken, %2 skipped; %3 min worked; %4 ml of water")
                        .arg(root.today.taken).arg(root.today.skipped).arg(root.today.worked)
                        .arg(root.today.water)
                    + (chart.target > 0 ? qsTranslate("Narv", " (target %1 ml)").arg(chart.target) : "")
        }
        Bars {
            objectName: "breaks"
            title: qsTranslate("Narv", "Breaks taken (and skipped, above)")
            field: "taken"
            second: "skipped"
            most: chart.mostBreaks
            unit: qsTranslate("Narv", "breaks")
        }
        Bars {
            objectName: "worked"
            title: qsTranslate("Narv", "Time worked")
            field: "worked"
            most: chart.mostWorked
            unit: qsTranslate("Narv", "min")
        }
        Bars {
            objectName: "water"
            title: chart.target > 0 ? qsTranslate("Narv", "Water against the target of %1 ml").arg(chart.target)
                                    : qsTranslate("Narv", "Water (no daily target)")
            field: "waterShare"
            most: 1
            unit: qsTranslate("Narv", "of the target")
        }
        Label {
            id: exported
            objectName: "exported"
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            visible: text !== ""
        }
    }
}
