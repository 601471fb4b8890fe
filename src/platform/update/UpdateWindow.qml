import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Window

// The outcome of an update check: the emblem, a heading, a message, the
// links (release notes, download) when there are any, and Close. UpdateWindow
// sets the texts; links open in the browser.
Window {
    id: window

    property string emblem // an image URL
    property string heading
    property string message
    property string links // rich text; empty: no links line

    title: qsTranslate("Narv", "Software Update")
    flags: Qt.Dialog
    color: palette.window
    width: 400
    minimumWidth: 380
    height: Math.max(content.implicitHeight + 32, 140)

    SystemPalette {
        id: palette
    }

    ColumnLayout {
        id: content
        anchors.fill: parent
        anchors.margins: 16
        spacing: 12

        RowLayout {
            spacing: 16
            Layout.fillWidth: true

            Image {
                source: window.emblem
                sourceSize.width: 56
                sourceSize.height: 56
                Layout.alignment: Qt.AlignTop
            }

            ColumnLayout {
                spacing: 6
                Layout.fillWidth: true

                Text {
                    text: window.heading
                    color: palette.windowText
                    font.bold: true
                    font.pointSize: 12
                    Layout.fillWidth: true
                    wrapMode: Text.Wrap
                }
                TextEdit {
                    text: window.message
                    color: palette.windowText
                    readOnly: true
                    selectByMouse: true
                    wrapMode: TextEdit.Wrap
                    Layout.fillWidth: true
                }
                Text {
                    visible: window.links.length > 0
                    text: window.links
                    textFormat: Text.RichText
                    color: palette.windowText
                    onLinkActivated: link => Qt.openUrlExternally(link)
                    Layout.fillWidth: true

                    HoverHandler {
                        cursorShape: parent.hoveredLink ? Qt.PointingHandCursor : Qt.ArrowCursor
                    }
                }
            }
        }

        Button {
            text: qsTranslate("Narv", "Close")
            focus: true
            Layout.alignment: Qt.AlignRight
            onClicked: window.close()
            Keys.onEscapePressed: window.close()
        }
    }
}
