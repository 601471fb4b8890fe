import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The editor of one prompt, a modal sheet over the Style tab. "OK" (or
// Return) closes it and hands the text over; "Cancel" (or Escape) closes it
// and drops the edit.
Dialog {
    id: sheet

    // The text the editor opens with; the edited copy is `text`.
    property string item
    property alias text: editor.text
    readonly property alias editor: editor

    // "OK": the text the editor opened with and the text it closed with.
    signal commit(string from, string to)

    modal: true
    closePolicy: Popup.CloseOnEscape
    anchors.centerIn: Overlay.overlay
    width: Math.min(parent ? parent.width - 32 : 420, 420)
    padding: 16
    title: qsTranslate("Narv", "Edit")

    onAboutToShow: {
        editor.text = item;
        editor.forceActiveFocus();
    }
    onAccepted: commit(item, text)

    TextField {
        id: editor
        objectName: "promptEditor"
        width: parent.width
        selectByMouse: true
        onAccepted: sheet.accept()
    }

    footer: Pane {
        RowLayout {
            anchors.right: parent.right
            spacing: 8

            Button {
                objectName: "cancel"
                text: qsTranslate("Narv", "Cancel")
                onClicked: sheet.reject()
            }
            Button {
                objectName: "ok"
                text: qsTranslate("Narv", "OK")
                highlighted: true
                onClicked: sheet.accept()
            }
        }
    }
}
