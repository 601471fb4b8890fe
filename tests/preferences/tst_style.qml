import QtQuick
import QtTest
import Narv.Preferences
import NarvTest

// The Style tab: how adding, editing and deleting change the stored list.
Item {
    width: 640
    height: 700

    PreferencesView {
        id: view
        anchors.fill: parent
    }

    TestCase {
        name: "Style"
        when: windowShown

        property var style
        property var sheet
        readonly property var abac: ["a", "b", "a", "c"]

        function initTestCase() {
            style = findChild(view, "style");
            sheet = style.sheet;
        }

        function init() {
            Probe.reset();
            view.currentIndex = 2;
            style.styleModel.promptSelectIdx = 0;
            PrefEnvironment.styleState.setPromptList(abac);
            tryCompare(style.styleModel, "promptList", abac);
        }

        function row(index) {
            const list = findChild(style, "promptList");
            list.forceLayout();
            return list.itemAtIndex(index);
        }

        // Opens the editor (on a new prompt, or on a row), types, and commits
        // with OK or Return, or drops the edit with Escape.
        function edit(index, text, ending) {
            mouseClick(index < 0 ? findChild(style, "addPrompt") : findChild(row(index), "edit"));
            tryCompare(sheet, "opened", true);
            sheet.editor.selectAll();
            keyClick(Qt.Key_Delete);
            for (const c of text)
                keyClick(c);
            if (ending === "ok")
                mouseClick(findChild(sheet.footer, ending));
            else
                keyClick(ending);
            tryCompare(sheet, "visible", false);
        }

        // New prompts go on top, also a text already there; delete removes
        // every copy; an edit changes the first copy in its place; an emptied
        // or dropped edit changes nothing.
        function test_edits() {
            edit(-1, "d", "ok");
            edit(-1, "c", Qt.Key_Return);
            compare(Probe.stored("break_prompt_list_0"), ["c", "d", "a", "b", "a", "c"]);
            mouseClick(findChild(row(0), "trash"));
            compare(Probe.stored("break_prompt_list_0"), ["d", "a", "b", "a"]);
            edit(3, "x", Qt.Key_Return);
            edit(1, "", "ok");
            edit(0, "zzz", Qt.Key_Escape);
            compare(Probe.stored("break_prompt_list_0"), ["d", "x", "b", "a"]);
            compare(Probe.stored("new_day_break_prompt_list_0"), undefined);
        }
    }
}
