pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.Preferences

// The Style tab: the break style, and the stored prompt lists of that style
// (break prompts, new-day prompts), which are added to, edited, deleted from
// and reset to the built-in texts here. Breaks themselves draw from the
// built-in texts; the lists are the user's own.
ColumnLayout {
    id: root

    readonly property PrefStyleState styleState: PrefEnvironment.styleState
    readonly property alias styleModel: styleModel
    readonly property alias sheet: sheet

    spacing: 8

    PrefStyleModel {
        id: styleModel
        styleState: root.styleState
        onEditTextChanged: {
            if (editText === undefined) {
                sheet.close();
            } else {
                sheet.item = editText;
                sheet.open();
            }
        }
    }

    // The list may have been edited in the file while the tab was away.
    onVisibleChanged: {
        if (visible)
            styleModel.syncPromptList();
    }

    RowLayout {
        spacing: 8
        Layout.fillWidth: true

        Label {
            text: qsTranslate("Narv", "Break Style")
        }
        ComboBox {
            objectName: "breakStyle"
            model: styleModel.styleNames
            currentIndex: styleModel.breakStyle
            onActivated: index => styleModel.breakStyle = index
            Layout.preferredWidth: 160
        }
    }

    RowLayout {
        spacing: 0
        Layout.fillWidth: true

        ButtonGroup {
            id: segments
        }
        Button {
            objectName: "breakPrompts"
            text: qsTranslate("Narv", "Break Prompts")
            checkable: true
            checked: styleModel.promptSelectIdx === 0
            ButtonGroup.group: segments
            onClicked: styleModel.promptSelectIdx = 0
        }
        Button {
            objectName: "newDay"
            text: qsTranslate("Narv", "New Day")
            checkable: true
            checked: styleModel.promptSelectIdx !== 0
            ButtonGroup.group: segments
            onClicked: styleModel.promptSelectIdx = 1
        }

        Item {
            Layout.fillWidth: true
        }

        ToolButton {
            objectName: "addPrompt"
            icon.source: "icons/plus.svg"
            icon.color: palette.buttonText
            icon.width: 13
            icon.height: 13
            display: AbstractButton.IconOnly
            Accessible.name: "plus"
            ToolTip.text: qsTranslate("Narv", "New prompt")
            ToolTip.visible: hovered
            ToolTip.delay: 600
            onClicked: styleModel.addNewPrompt()
        }
        ToolButton {
            objectName: "resetPrompts"
            icon.source: "icons/gobackward.svg"
            icon.color: palette.buttonText
            icon.width: 12
            icon.height: 12
            display: AbstractButton.IconOnly
            Accessible.name: "gobackward"
            ToolTip.text: qsTranslate("Narv", "Restore the built-in prompts")
            ToolTip.visible: hovered
            ToolTip.delay: 600
            onClicked: styleModel.resetPromptList()
        }
    }

    Frame {
        padding: 1
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: 120

        ListView {
            id: list
            objectName: "promptList"
            anchors.fill: parent
            clip: true
            model: styleModel.promptList
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollBar {}

            delegate: ItemDelegate {
                id: row

                required property string modelData
                required property int index

                width: ListView.view.width
                focusPolicy: Qt.NoFocus
                highlighted: false
                contentItem: RowLayout {
                    spacing: 4

                    Label {
                        text: row.modelData
                        textFormat: Text.PlainText
                        wrapMode: Text.Wrap
                        Layout.fillWidth: true
                    }
                    ToolButton {
                        objectName: "edit"
                        icon.source: "icons/square.and.pencil.svg"
                        icon.color: palette.buttonText
                        icon.width: 15
                        icon.height: 15
                        display: AbstractButton.IconOnly
                        Accessible.name: "square.and.pencil"
                        ToolTip.text: qsTranslate("Narv", "Edit")
                        ToolTip.visible: hovered
                        ToolTip.delay: 600
                        onClicked: root.styleModel.edit(row.modelData)
                    }
                    ToolButton {
                        objectName: "trash"
                        icon.source: "icons/trash.fill.svg"
                        icon.color: palette.buttonText
                        icon.width: 15
                        icon.height: 15
                        display: AbstractButton.IconOnly
                        Accessible.name: "trash.fill"
                        ToolTip.text: qsTranslate("Narv", "Delete")
                        ToolTip.visible: hovered
                        ToolTip.delay: 600
                        onClicked: root.styleModel.trash(row.modelData)
                    }
                }
            }
        }
    }

    PrefStylePromptEditView {
        id: sheet
        objectName: "promptSheet"
        onClosed: styleModel.editText = undefined
        onCommit: (from, to) => styleModel.commit(from, to)
    }
}
