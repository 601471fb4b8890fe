import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.Preferences

// The Interruptions tab: a heads-up before a break, postponing it, pausing
// for a while, waiting out a call or a full-screen window, and sounds. All
// off as they come.
ColumnLayout {
    id: root

    readonly property PrefInterruptState interruptState: PrefEnvironment.interruptState
    readonly property real feature: Math.max(headsUpRow.labelWidth, postponeRow.labelWidth,
                                             limitRow.labelWidth)

    // A choice of numbers, 0 shown as "Off", bound to one setting.
    component Choice: ComboBox {
        id: choice

        required property string name
        required property var values
        property string unit

        model: values.map(v => v === 0 ? qsTranslate("Narv", "Off") : v + " " + unit)
        currentIndex: Math.max(0, values.indexOf(root.interruptState[name]))
        onActivated: index => root.interruptState[name] = values[index]
        Layout.preferredWidth: 140
    }

    spacing: 6

    PrefSectionTitle {
        text: qsTranslate("Narv", "Before a break")
        topPadding: 0
    }
    PrefRow {
        id: headsUpRow
        label: qsTranslate("Narv", "Heads-up")
        feature: root.feature
        Choice {
            objectName: "headsUpSeconds"
            name: "headsUpSeconds"
            values: [0, 10, 30, 60]
            unit: qsTranslate("Narv", "seconds")
        }
    }
    PrefRow {
        id: postponeRow
        label: qsTranslate("Narv", "Postpone")
        feature: root.feature
        Choice {
            objectName: "postponeMinutes"
            name: "postponeMinutes"
            values: [0, 1, 5, 10]
            unit: qsTranslate("Narv", "mins")
        }
    }
    PrefRow {
        id: limitRow
        label: qsTranslate("Narv", "At most")
        feature: root.feature
        enabled: root.interruptState.postponeMinutes > 0
        Choice {
            objectName: "postponeLimit"
            name: "postponeLimit"
            values: [1, 2, 3]
            unit: qsTranslate("Narv", "in a row")
        }
    }
    PrefRow {
        feature: root.feature
        PrefCheckBox {
            objectName: "deferWhenBusy"
            text: qsTranslate("Narv", "No break during a call or full-screen work")
            checked: root.interruptState.deferWhenBusy
            onToggled: root.interruptState.deferWhenBusy = checked
        }
    }

    PrefSectionTitle {
        text: qsTranslate("Narv", "Menu and sounds")
    }
    PrefRow {
        feature: root.feature
        PrefCheckBox {
            objectName: "pauseForEnable"
            text: qsTranslate("Narv", "Offer to pause for a while")
            checked: root.interruptState.pauseForEnable
            onToggled: root.interruptState.pauseForEnable = checked
        }
    }
    PrefRow {
        feature: root.feature
        PrefCheckBox {
            objectName: "breakSounds"
            text: qsTranslate("Narv", "Sounds at the start and end of a break")
            checked: root.interruptState.breakSounds
            onToggled: root.interruptState.breakSounds = checked
        }
    }

    Item {
        Layout.fillHeight: true
    }
}
