import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.History
import Narv.Preferences

// The History tab: whether Narv keeps a history of breaks, pauses and water,
// how many days of it, and the window that shows it.
ColumnLayout {
    id: root

    readonly property real feature: Math.max(keepRow.labelWidth, daysRow.labelWidth)

    spacing: 6

    PrefSectionTitle {
        text: qsTranslate("Narv", "History")
        topPadding: 0
    }
    PrefRow {
        id: keepRow
        label: qsTranslate("Narv", "Keep")
        feature: root.feature
        PrefCheckBox {
            objectName: "keepHistory"
            text: qsTranslate("Narv", "Keep a history")
            checked: HistorySettings.keepHistory
            onToggled: HistorySettings.keepHistory = checked
        }
    }
    PrefRow {
        id: daysRow
        label: qsTranslate("Narv", "For")
        feature: root.feature
        DigitalAccumulatorView {
            objectName: "keepDays"
            object: HistorySettings
            name: "keepDays"
            delta: 30
        }
        Label {
            text: qsTranslate("Narv", "days")
            font.bold: true
        }
    }
    Button {
        objectName: "openHistory"
        text: qsTranslate("Narv", "Open History…")
        Layout.leftMargin: root.feature + 12
        onClicked: HistorySettings.openHistory()
    }
    Item {
        Layout.fillHeight: true
    }
}
