import QtQuick
import QtTest
import Narv.Preferences

// The About tab: the program's facts and the release notes link, and the
// icon font's emblem where there is no icon image.
Item {
    id: root

    width: 640
    height: 500

    PreferencesView {
        id: view
        anchors.fill: parent
    }

    TestCase {
        id: test

        name: "About"
        when: windowShown

        Component {
            id: withoutIcon
            PrefAboutView {
                iconSource: "qrc:/no/such/icon.png"
            }
        }

        function init() {
            view.currentIndex = 4;
        }

        function test_facts() {
            const about = findChild(view, "about");
            verify(about.visible);
            compare(findChild(about, "name").text, "Narv");
            verify(/^v[0-9]+\.[0-9]+\.[0-9]+\([^ ()]+\)$/.test(findChild(about, "version").text),
                   findChild(about, "version").text);
            verify(findChild(about, "copyright").text.startsWith(
                       "Copyright © " + new Date().getFullYear() + " "));
            const notes = findChild(about, "releaseNotes");
            compare(notes.textFormat, Text.MarkdownText);
            verify(/^\[Release Notes\]\(https:\/\/[^)]*\/release_note\/\)$/.test(notes.text), notes.text);

            const icon = findChild(about, "icon");
            tryCompare(icon, "status", Image.Ready);
            verify(icon.visible);
            verify(!findChild(about, "glyph").visible);
        }

        function test_emblemWithoutIconImage() {
            const about = createTemporaryObject(withoutIcon, root);
            const glyph = findChild(about, "glyph");
            tryVerify(() => glyph.visible);
            verify(!findChild(about, "icon").visible);
            compare(glyph.text, PrefEnvironment.iconGlyph);
            compare(glyph.font.family, PrefEnvironment.iconFontFamily);
            compare(glyph.font.pixelSize, 60);
            // 20 below the emblem.
            compare(glyph.parent.implicitHeight, glyph.implicitHeight + 20);
        }
    }
}
