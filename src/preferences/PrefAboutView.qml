import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.Preferences
import Narv.Windows

// The About tab: the icon, the name, the version, the rights line and the
// release notes. Without an icon image the icon font's emblem stands in.
Item {
    id: root

    // The icon image; the emblem shows when it cannot be loaded.
    property url iconSource: "qrc:/Narv/Windows/app.narv.Narv.png"

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight

    RowLayout {
        id: row
        anchors.centerIn: parent
        spacing: 0

        Item {
            implicitWidth: Math.max(icon.visible ? icon.implicitWidth : 0,
                                    glyph.visible ? glyph.implicitWidth : 0)
            implicitHeight: icon.visible ? icon.implicitHeight : glyph.implicitHeight + 20
            Layout.alignment: Qt.AlignTop

            Image {
                id: icon
                objectName: "icon"
                source: root.iconSource
                sourceSize.width: 96
                sourceSize.height: 96
                visible: status === Image.Ready
            }
            Label {
                id: glyph
                objectName: "glyph"
                visible: icon.status !== Image.Ready
                text: PrefEnvironment.iconGlyph
                font.family: PrefEnvironment.iconFontFamily
                font.pixelSize: 60
            }
        }

        Item {
            implicitWidth: 16
        }

        ColumnLayout {
            spacing: 4
            Layout.alignment: Qt.AlignVCenter

            Label {
                objectName: "name"
                text: AboutInfo.name
                font.pointSize: version.font.pointSize * 2.2
            }
            Label {
                id: version
                objectName: "version"
                text: PrefEnvironment.versionLine
            }
            Label {
                objectName: "copyright"
                text: AboutInfo.copyright
            }
            Label {
                objectName: "releaseNotes"
                text: "[%1](%2)".arg(qsTranslate("Narv", "Release Notes")).arg(
                          AboutInfo.releaseNotesLink)
                textFormat: Text.MarkdownText
                onLinkActivated: link => Qt.openUrlExternally(link)

                HoverHandler {
                    cursorShape: parent.hoveredLink ? Qt.PointingHandCursor : Qt.ArrowCursor
                }
            }
        }
    }
}
