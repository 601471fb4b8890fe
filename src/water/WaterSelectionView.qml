import QtQuick
import Narv.Water

// The amounts to choose from, in as many columns of at least 70 pixels as fit.
// One blue highlight lies under the chip of the amount last chosen and slides
// to the next chip tapped; a tap only chooses, "Done" drinks.
Item {
    id: root

    required property PrefWaterState waterState

    readonly property real minimumColumnWidth: 70
    readonly property real spacing: 8
    readonly property int columns: Math.max(1, Math.floor((width + spacing)
                                                          / (minimumColumnWidth + spacing)))
    readonly property real cellWidth: (width - (columns - 1) * spacing) / columns
    // The cell of the chosen amount; null when it is not one of those offered.
    readonly property Cell selectedCell: {
        const index = WaterPanel.amounts.indexOf(waterState.lastSelectedAmount);
        // count: a cell made after this was last worked out changes the answer.
        return index >= 0 && index < cells.count ? cells.itemAt(index) : null;
    }
    // The highlight moves (rather than jumps) once the user has chosen.
    property bool animate: false

    implicitHeight: grid.implicitHeight

    // A grid cell: the chip of one amount, centred in its column.
    component Cell: Item {
        id: cell

        required property int amount
        property alias isSelected: chip.isSelected
        readonly property WaterSelectItem chip: chip

        signal clicked

        height: chip.implicitHeight

        WaterSelectItem {
            id: chip
            objectName: "amount" + cell.amount
            anchors.centerIn: parent
            width: implicitWidth
            height: implicitHeight
            text: cell.amount + qsTranslate("Narv", "ml")
            onClicked: cell.clicked()
        }
    }

    SystemPalette {
        id: system
    }

    Item {
        id: highlight
        objectName: "highlight"
        visible: root.selectedCell !== null
        x: root.selectedCell ? root.selectedCell.x + root.selectedCell.chip.x : 0
        y: root.selectedCell ? root.selectedCell.y + root.selectedCell.chip.y : 0
        width: root.selectedCell ? root.selectedCell.chip.width : 0
        height: root.selectedCell ? root.selectedCell.chip.height : 0

        Behavior on x {
            enabled: root.animate
            NumberAnimation {
                duration: 350
                easing.type: Easing.Bezier
                easing.bezierCurve: [0.42, 0, 0.58, 1, 1, 1]
            }
        }
        Behavior on y {
            enabled: root.animate
            NumberAnimation {
                duration: 350
                easing.type: Easing.Bezier
                easing.bezierCurve: [0.42, 0, 0.58, 1, 1, 1]
            }
        }
        Behavior on width {
            enabled: root.animate
            NumberAnimation {
                duration: 350
                easing.type: Easing.Bezier
                easing.bezierCurve: [0.42, 0, 0.58, 1, 1, 1]
            }
        }

        SoftShadow {
            anchors.fill: parent
            cornerRadius: height / 2
            color: Qt.rgba(system.windowText.r, system.windowText.g, system.windowText.b, 0.55)
            strength: 0.5
            blur: 3
            offsetY: 3
        }

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            color: "#0a7aff"
        }
    }

    Grid {
        id: grid
        width: root.width
        columns: root.columns
        rowSpacing: root.spacing
        columnSpacing: root.spacing

        Repeater {
            id: cells
            model: WaterPanel.amounts

            Cell {
                required property var modelData

                amount: modelData
                width: root.cellWidth
                isSelected: modelData === root.waterState.lastSelectedAmount
                onClicked: {
                    root.animate = true;
                    root.waterState.lastSelectedAmount = modelData;
                }
            }
        }
    }
}
