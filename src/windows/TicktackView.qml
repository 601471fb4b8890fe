import QtQuick
import Narv.Windows

// One countdown's remaining time, in large type and never cut short.
Text {
    required property TicktackState ticktackState

    SystemPalette {
        id: system
    }

    text: ticktackState.timeString
    color: system.windowText
    font.pixelSize: 100
    font.bold: true
    textFormat: Text.PlainText
    wrapMode: Text.NoWrap
    elide: Text.ElideNone
}
