import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.Preferences

// The Water tab: the reminder on or off, the daily target, the mode, the
// working hours and the interval. Switching the reminder and moving the
// working hours act at once through PrefWaterModel.
ColumnLayout {
    id: root

    readonly property PrefWaterState waterState: PrefEnvironment.waterState
    readonly property real feature: Math.max(enableRow.labelWidth, targetRow.labelWidth,
                                             modeRow.labelWidth, interval.labelWidth)

    spacing: 6

    SystemPalette {
        id: system
    }

    PrefWaterModel {
        id: waterModel
        objectName: "waterModel"
        waterState: root.waterState
        active: root.visible && root.Window.window !== null && root.Window.window.visible
    }

    PrefSectionTitle {
        text: qsTranslate("Narv", "Options")
        topPadding: 0
    }
    PrefRow {
        id: enableRow
        label: qsTranslate("Narv", "Enable")
        feature: root.feature
        PrefCheckBox {
            objectName: "enable"
            text: qsTranslate("Narv", "Enable drink water reminder")
            checked: root.waterState.enable
            onToggled: root.waterState.enable = checked
        }
    }

    Rectangle {
        implicitHeight: 1
        color: system.mid
        Layout.fillWidth: true
        Layout.topMargin: 6
    }

    PrefSectionTitle {
        text: qsTranslate("Narv", "Schedule")
        topPadding: 6
    }
    PrefRow {
        id: targetRow
        label: qsTranslate("Narv", "Target")
        feature: root.feature
        DigitalAccumulatorView {
            objectName: "target"
            object: root.waterState
            name: "target"
            delta: 50
        }
        Label {
            text: qsTranslate("Narv", "ml")
            font.bold: true
        }
    }
    PrefRow {
        id: modeRow
        label: qsTranslate("Narv", "Mode")
        feature: root.feature
        ComboBox {
            objectName: "mode"
            model: waterModel.modeNames
            currentIndex: waterModel.modeIndex
            onActivated: index => waterModel.modeIndex = index
            Layout.preferredWidth: 100
        }
    }
    PrefRow {
        feature: root.feature
        Label {
            objectName: "modeTip"
            text: waterModel.modeTip
            leftPadding: 8
            font.pointSize: modeRow.labelFont.pointSize * 0.85
            color: Qt.rgba(system.windowText.r, system.windowText.g, system.windowText.b, 0.6)
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
    }
    PrefWaterIntervalView {
        id: interval
        waterState: root.waterState
        waterModel: waterModel
        feature: root.feature
        Layout.fillWidth: true
    }

    Item {
        Layout.fillHeight: true
    }
}
