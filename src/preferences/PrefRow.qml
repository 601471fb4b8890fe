import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// One row of a tab: indented 20, the label with its trailing edge on the
// tab's alignment guide `feature` (the width of the tab's widest label), 16
// of space, then the row's controls. A row without a label keeps the label's
// place empty, so the controls of every row of a tab start at one x.
RowLayout {
    id: row

    property string label
    property real feature
    readonly property real labelWidth: title.implicitWidth
    readonly property font labelFont: title.font
    default property alias content: controls.data

    spacing: 0

    Item {
        implicitWidth: 20
    }

    Label {
        id: title
        text: row.label
        horizontalAlignment: Text.AlignRight
        Layout.preferredWidth: row.feature
        Layout.alignment: Qt.AlignVCenter
    }

    Item {
        implicitWidth: row.feature > 0 ? 16 : 0
    }

    RowLayout {
        id: controls
        spacing: 8
        Layout.fillWidth: true
    }
}
