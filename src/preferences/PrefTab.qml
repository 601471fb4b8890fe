import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The page of one tab: its view with a margin of 20 around it, filling the
// window, and scrolling when the window is smaller than the view.
Flickable {
    id: tab

    default property alias content: column.data

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    contentWidth: width
    contentHeight: Math.max(height, column.implicitHeight + 40)

    ScrollBar.vertical: ScrollBar {}

    ColumnLayout {
        id: column
        x: 20
        y: 20
        width: tab.width - 40
        height: tab.contentHeight - 40
    }
}
