import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.Preferences

// The Workflow tab: the work period, the short and the long break, the
// custom prompt and what stops the countdown.
ColumnLayout {
    id: root

    readonly property PrefState prefState: PrefEnvironment.prefState
    // Every row's controls start here; see PrefRow.
    readonly property real feature: Math.max(workRow.labelWidth, breakRow.labelWidth,
                                             textRow.labelWidth, longEveryRow.labelWidth,
                                             longBreakRow.labelWidth)

    spacing: 6

    PrefSectionTitle {
        text: qsTranslate("Narv", "Short Break Options")
        topPadding: 0
    }
    PrefRow {
        id: workRow
        label: qsTranslate("Narv", "Every")
        feature: root.feature
        DigitalAccumulatorView {
            objectName: "workTime"
            object: root.prefState
            name: "workTime"
            delta: 1
        }
        Label {
            text: qsTranslate("Narv", "mins")
        }
    }
    PrefRow {
        id: breakRow
        label: qsTranslate("Narv", "Break")
        feature: root.feature
        DigitalAccumulatorView {
            objectName: "breakTime"
            object: root.prefState
            name: "breakTime"
            // Seconds go in half minutes.
            delta: 30
        }
        Label {
            text: qsTranslate("Narv", "seconds")
        }
    }
    PrefRow {
        id: textRow
        label: qsTranslate("Narv", "Text")
        feature: root.feature
        PrefCheckBox {
            objectName: "customBreakPrompt"
            text: qsTranslate("Narv", "Custom break prompt")
            checked: root.prefState.customBreakPrompt
            onToggled: root.prefState.customBreakPrompt = checked
        }
    }
    PrefRow {
        feature: root.feature
        // Hidden, not emptied: switching the custom prompt off keeps its text.
        visible: root.prefState.customBreakPrompt
        TextField {
            objectName: "breakPrompt"
            implicitWidth: 300
            selectByMouse: true
            text: root.prefState.breakPrompt
            onTextEdited: root.prefState.breakPrompt = text
        }
    }

    PrefSectionTitle {
        text: qsTranslate("Narv", "Long Break Options")
    }
    PrefRow {
        feature: root.feature
        PrefCheckBox {
            objectName: "forceLongBreak"
            // The missing space before the parenthesis is how this text reads.
            text: qsTranslate("Narv", "Force for long breaks(skip button will not display)")
            checked: root.prefState.forceLongBreak
            onToggled: root.prefState.forceLongBreak = checked
        }
    }
    PrefRow {
        id: longEveryRow
        label: qsTranslate("Narv", "Every")
        feature: root.feature
        DigitalAccumulatorView {
            objectName: "shortBreakTimes"
            object: root.prefState
            name: "shortBreakTimes"
            delta: 1
        }
        Label {
            text: qsTranslate("Narv", "short breaks")
        }
    }
    PrefRow {
        id: longBreakRow
        label: qsTranslate("Narv", "Break")
        feature: root.feature
        DigitalAccumulatorView {
            objectName: "longBreakTime"
            object: root.prefState
            name: "longBreakTime"
            delta: 1
        }
        Label {
            text: qsTranslate("Narv", "mins")
        }
    }

    PrefSectionTitle {
        text: qsTranslate("Narv", "Other Options")
    }
    PrefRow {
        feature: root.feature
        PrefCheckBox {
            objectName: "restartTimerAfterAwake"
            text: qsTranslate("Narv", "Restart timer after Mac awake")
            checked: root.prefState.restartTimerAfterAwake
            onToggled: root.prefState.restartTimerAfterAwake = checked
        }
    }
    PrefRow {
        feature: root.feature
        PrefCheckBox {
            objectName: "stopTimerAfterMouseStop"
            text: qsTranslate("Narv", "Stop timer after Mouse stop for 5 mins")
            checked: root.prefState.stopTimerAfterMouseStop
            onToggled: root.prefState.stopTimerAfterMouseStop = checked
        }
    }
    PrefRow {
        feature: root.feature
        PrefCheckBox {
            objectName: "showNewDayTip"
            text: qsTranslate("Narv", "Show a new day prompt")
            checked: root.prefState.showNewDayTip
            onToggled: root.prefState.showNewDayTip = checked
        }
    }

    Item {
        Layout.fillHeight: true
    }
}
