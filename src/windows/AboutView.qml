import QtQuick
import Narv.Windows

// The About window: icon, name, version, rights line and the release notes.
Rectangle {
    implicitWidth: 320
    implicitHeight: 280
    color: system.window

    SystemPalette {
        id: system
    }

    Column {
        anchors.centerIn: parent
        spacing: 8

        Image {
            anchors.horizontalCenter: parent.horizontalCenter
            source: "app.narv.Narv.png"
            sourceSize.width: 96
            sourceSize.height: 96
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: AboutInfo.name
            color: system.windowText
            font.pixelSize: 18
            font.bold: true
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: AboutInfo.versionLine
            color: system.windowText
            font.pixelSize: 12
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: AboutInfo.copyright
            color: system.windowText
            font.pixelSize: 11
        }

        Text {
            objectName: "releaseNotes"
            anchors.horizontalCenter: parent.horizontalCenter
            text: "<a href=\"%1\">%2</a>".arg(AboutInfo.releaseNotesLink)
                                         .arg(qsTranslate("Narv", "Release Notes"))
            textFormat: Text.StyledText
            linkColor: "#0a7aff"
            font.pixelSize: 11
            onLinkActivated: link => Qt.openUrlExternally(link)

            HoverHandler {
                cursorShape: Qt.PointingHandCursor
            }
        }
    }
}
