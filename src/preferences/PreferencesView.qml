pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Narv.Preferences

// The settings window's content: seven tabs, each a symbol above its title.
// Every control writes its setting the moment it changes; there is nothing to
// apply or save. Ctrl+W closes the window.
Page {
    id: root

    property alias currentIndex: tabs.currentIndex

    // Runs each time the window comes up again after it was closed. The
    // keyboard starts on the tab strip: Tab goes on into the tab.
    function opened() {
        tabs.currentIndex = 0;
        tabs.itemAt(0).forceActiveFocus(Qt.ActiveWindowFocusReason);
        PrefEnvironment.syncLoginItem();
    }

    // The highlight colour where it stands out against a tab (3:1, WCAG's
    // figure for graphical objects), else the tab's text colour.
    function markColor(palette) {
        const luminance = color => {
            const channel = c => c <= 0.03928 ? c / 12.92 : Math.pow((c + 0.055) / 1.055, 2.4);
            return 0.2126 * channel(color.r) + 0.7152 * channel(color.g) + 0.0722 * channel(color.b);
        };
        const a = luminance(palette.highlight);
        const b = luminance(palette.button);
        const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
        return ratio >= 3 ? palette.highlight : palette.buttonText;
    }

    implicitWidth: 560
    implicitHeight: 560

    // The desktop's colours, also when they change while the window is open
    // (a switch to a dark theme): the controls take them from here.
    palette.window: system.window
    palette.windowText: system.windowText
    palette.base: system.base
    palette.alternateBase: system.alternateBase
    palette.text: system.text
    palette.button: system.button
    palette.buttonText: system.buttonText
    palette.highlight: system.highlight
    palette.highlightedText: system.highlightedText
    palette.light: system.light
    palette.midlight: system.midlight
    palette.mid: system.mid
    palette.dark: system.dark
    palette.shadow: system.shadow
    palette.disabled.windowText: disabled.windowText
    palette.disabled.text: disabled.text
    palette.disabled.buttonText: disabled.buttonText

    SystemPalette {
        id: system
    }
    SystemPalette {
        id: disabled
        colorGroup: SystemPalette.Disabled
    }

    Connections {
        target: root.Window.window
        function onVisibleChanged() {
            if (root.Window.window.visible)
                root.opened();
        }
    }

    Shortcut {
        sequence: "Ctrl+W"
        onActivated: root.Window.window.close()
    }

    header: TabBar {
        id: tabs
        objectName: "tabs"

        Repeater {
            model: [
                {
                    "title": qsTranslate("Narv", "General"),
                    "symbol": "gearshape.circle"
                },
                {
                    "title": qsTranslate("Narv", "Workflow"),
                    "symbol": "tray.circle"
                },
                {
                    "title": qsTranslate("Narv", "Style"),
                    "symbol": "books.vertical.circle"
                },
                {
                    "title": qsTranslate("Narv", "Water"),
                    "symbol": "drop.circle"
                },
                {
                    "title": qsTranslate("Narv", "About"),
                    "symbol": "info.circle"
                },
                {
                    "title": qsTranslate("Narv", "History"),
                    "symbol": "chart.bar"
                },
                {
                    "title": qsTranslate("Narv", "Interruptions"),
                    "symbol": "bell.circle"
                }
            ]

            delegate: TabButton {
                required property var modelData

                objectName: modelData.symbol
                text: modelData.title
                icon.source: "icons/" + modelData.symbol + ".svg"
                // The symbols are drawn in black: they take the palette's colour.
                icon.color: palette.buttonText
                icon.width: 24
                icon.height: 24
                display: AbstractButton.TextUnderIcon
                Accessible.description: modelData.symbol

                // The styles tell the current tab from the others by a shade
                // only: a bar under it says it plainly.
                Rectangle {
                    objectName: "currentMark"
                    anchors.left: parent.left
                    anchors.right: parent.right
                    anchors.bottom: parent.bottom
                    height: 3
                    color: root.markColor(parent.palette)
                    visible: parent.checked
                }
            }
        }
    }

    StackLayout {
        anchors.fill: parent
        currentIndex: tabs.currentIndex

        PrefTab {
            PrefGeneralView {
                objectName: "general"
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }
        PrefTab {
            PrefBreakView {
                objectName: "workflow"
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }
        PrefTab {
            PrefStyleView {
                objectName: "style"
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }
        PrefTab {
            PrefWaterView {
                objectName: "water"
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }
        PrefTab {
            PrefAboutView {
                objectName: "about"
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }
        PrefTab {
            PrefHistoryView {
                objectName: "history"
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }
        PrefTab {
            PrefInterruptionsView {
                objectName: "interruptions"
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }
    }
}
