pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Narv.Preferences
import Narv.Water

// Working hours and the interval chips of the Water tab. A chip only stores
// the interval: the reminder already armed keeps its time, and the new
// interval counts from the next arming on.
ColumnLayout {
    id: root

    property PrefWaterState waterState
    property PrefWaterModel waterModel
    property real feature
    readonly property real labelWidth: Math.max(startRow.labelWidth, endRow.labelWidth)

    spacing: 6

    SystemPalette {
        id: system
    }

    PrefRow {
        id: startRow
        label: qsTranslate("Narv", "Start time")
        feature: root.feature
        HourMinutePicker {
            objectName: "startTime"
            date: root.waterState.intervalStartDate
            onPicked: (hour, minute) => root.waterState.intervalStartDate
                      = root.waterModel.withTime(root.waterState.intervalStartDate, hour, minute)
        }
        Item {
            Layout.fillWidth: true
        }
    }

    PrefRow {
        id: endRow
        label: qsTranslate("Narv", "End time")
        feature: root.feature
        HourMinutePicker {
            objectName: "endTime"
            date: root.waterState.intervalEndDate
            onPicked: (hour, minute) => root.waterState.intervalEndDate
                      = root.waterModel.withTime(root.waterState.intervalEndDate, hour, minute)
        }
        Item {
            Layout.fillWidth: true
        }
    }

    PrefRow {
        feature: root.feature

        Item {
            id: chips
            objectName: "intervals"

            readonly property var values: root.waterModel ? root.waterModel.intervalValues : []
            readonly property int selectedIndex: values.indexOf(root.waterModel.selectedInterval)
            readonly property Item selectedChip: selectedIndex >= 0
                                                 && repeater.count > selectedIndex
                                                 ? repeater.itemAt(selectedIndex) : null
            // The highlight jumps into place when the tab is built and slides
            // from chip to chip afterwards.
            property bool sliding: false

            implicitWidth: grid.implicitWidth
            implicitHeight: grid.implicitHeight

            Timer {
                interval: 0
                running: true
                onTriggered: chips.sliding = true
            }

            // The one highlight of the chips, under the selected one.
            Rectangle {
                objectName: "highlight"
                visible: chips.selectedChip !== null
                x: chips.selectedChip ? chips.selectedChip.x : 0
                y: chips.selectedChip ? chips.selectedChip.y : 0
                width: 70
                height: chips.selectedChip ? chips.selectedChip.height : 0
                radius: 8
                color: "#0a7aff"

                Behavior on x {
                    enabled: chips.sliding
                    NumberAnimation {
                        duration: 250
                        easing.type: Easing.InOutQuad
                    }
                }
                Behavior on y {
                    enabled: chips.sliding
                    NumberAnimation {
                        duration: 250
                        easing.type: Easing.InOutQuad
                    }
                }
            }

            Grid {
                id: grid
                columns: 3
                columnSpacing: 8
                rowSpacing: 8

                Repeater {
                    id: repeater
                    model: chips.values

                    delegate: Item {
                        id: cell

                        required property int modelData

                        function select() {
                            root.waterModel.selectedInterval = modelData;
                        }

                        objectName: "chip" + modelData
                        width: 70
                        implicitHeight: chip.implicitHeight
                        activeFocusOnTab: true
                        Accessible.role: Accessible.RadioButton
                        Accessible.name: chip.text
                        Accessible.checked: chip.isSelected
                        Keys.onSpacePressed: select()

                        WaterSelectItem {
                            id: chip
                            anchors.fill: parent
                            text: cell.modelData + qsTranslate("Narv", "min")
                            isSelected: cell.modelData === root.waterModel.selectedInterval
                            onClicked: cell.select()
                        }

                        Rectangle {
                            anchors.fill: parent
                            anchors.margins: -2
                            visible: cell.activeFocus
                            color: "transparent"
                            radius: 10
                            border.width: 2
                            border.color: system.highlight
                        }
                    }
                }
            }
        }
    }
}
