import QtQuick
import QtQuick.Layouts
import Narv.Preferences

// The General tab: start at login, the time in the status item, update checks.
ColumnLayout {
    id: root

    readonly property PrefState prefState: PrefEnvironment.prefState

    spacing: 6

    PrefSectionTitle {
        text: qsTranslate("Narv", "Start options")
        topPadding: 0
    }
    PrefRow {
        PrefCheckBox {
            objectName: "launchAtLogin"
            text: qsTranslate("Narv", "Launch at login")
            checked: root.prefState.launchAtLogin
            onToggled: root.prefState.launchAtLogin = checked
        }
    }

    PrefSectionTitle {
        text: qsTranslate("Narv", "StatusBar options")
    }
    PrefRow {
        PrefCheckBox {
            objectName: "showTime"
            text: qsTranslate("Narv", "Show time in StatusBar")
            checked: root.prefState.showTime
            onToggled: root.prefState.showTime = checked
        }
    }

    PrefSectionTitle {
        text: qsTranslate("Narv", "Update options")
    }
    PrefRow {
        PrefCheckBox {
            objectName: "autoCheckUpdate"
            // The name is part of the text, not the configured display name.
            text: qsTranslate("Narv", "Auto check update for Narv")
            checked: root.prefState.autoCheckUpdate
            onToggled: root.prefState.autoCheckUpdate = checked
        }
    }

    Item {
        Layout.fillHeight: true
    }
}
