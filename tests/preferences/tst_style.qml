import QtQuick
import QtTest
import Narv.Preferences
import NarvTest

// The Style tab: the style picker, the two lists, and how adding, editing,
// deleting and resetting change the stored lists.
Item {
    id: root

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
            sheet.close();
            tryCompare(sheet, "visible", false);
            PrefEnvironment.styleState.setPromptList(abac);
            PrefEnvironment.styleState.setNewDayPromptList(["morning"]);
            tryCompare(style.styleModel, "promptList", abac);
        }

        function row(index) {
            const list = findChild(style, "promptList");
            list.forceLayout();
            return list.itemAtIndex(index);
        }

        // Opens the editor (on a new prompt, or on a row), types, and commits
        // with OK or Return, or drops the edit with Cancel or Escape.
        function edit(index, text, ending) {
            mouseClick(index < 0 ? findChild(style, "addPrompt") : findChild(row(index), "edit"));
            tryCompare(sheet, "opened", true);
            sheet.editor.selectAll();
            if (text === "")
                keyClick(Qt.Key_Delete);
            for (const c of text)
                keyClick(c);
            if (ending === "ok" || ending === "cancel")
                mouseClick(findChild(sheet.footer, ending));
            else
                keyClick(ending);
            tryCompare(sheet, "visible", false);
        }

        function test_edits() {
            edit(-1, "d", "ok"); // new prompts go on top, also a text already there
            edit(-1, "c", Qt.Key_Return);
            compare(Probe.stored("break_prompt_list_0"), ["c", "d", "a", "b", "a", "c"]);
            PrefEnvironment.styleState.setPromptList(abac);
            edit(2, "x", Qt.Key_Return); // the second "a": the first is changed
            edit(3, "y", "ok"); // in its place
            edit(1, "", "ok"); // emptied: nothing changes
            edit(-1, "", "ok");
            edit(0, "zzz", "cancel");
            edit(0, "zzz", Qt.Key_Escape);
            compare(Probe.stored("break_prompt_list_0"), ["x", "b", "a", "y"]);
            compare(style.styleModel.editText, undefined);
        }

        function test_deleteRemovesEveryCopy() {
            mouseClick(findChild(row(2), "trash"));
            compare(Probe.stored("break_prompt_list_0"), ["b", "c"]);
            mouseClick(findChild(row(0), "trash"));
            mouseClick(findChild(row(0), "trash"));
            compare(Probe.stored("break_prompt_list_0"), []);
            compare(style.styleModel.promptList, [], "an empty list stays empty");
        }

        // Reset and delete act on the list shown, never on the other one.
        function test_theTwoLists() {
            mouseClick(findChild(style, "resetPrompts"));
            compare(Probe.stored("break_prompt_list_0"), Probe.builtInPrompts(0));
            compare(Probe.stored("new_day_break_prompt_list_0"), ["morning"]);
            PrefEnvironment.styleState.setPromptList(["a"]);
            mouseClick(findChild(style, "newDay"));
            compare(style.styleModel.promptList, ["morning"]);
            mouseClick(findChild(row(0), "trash"));
            compare(Probe.stored("new_day_break_prompt_list_0"), []);
            mouseClick(findChild(style, "resetPrompts"));
            compare(Probe.stored("new_day_break_prompt_list_0"), Probe.builtInPrompts(0, true));
            compare(Probe.stored("break_prompt_list_0"), ["a"]);
        }

        function test_styleChoice() {
            const picker = findChild(style, "breakStyle");
            compare(picker.currentText, "Default");
            picker.forceActiveFocus();
            keyClick(Qt.Key_Down);
            compare(Probe.stored("break_style"), "1");
            // Nothing stored for this style yet: its built-in texts show, and
            // the first style's list is left as it was.
            compare(style.styleModel.promptList, Probe.builtInPrompts(1));
            mouseClick(findChild(row(0), "trash"));
            compare(Probe.stored("break_prompt_list_1"), Probe.builtInPrompts(1).slice(1));
            compare(Probe.stored("break_prompt_list_0"), abac);
            // Chosen elsewhere (the settings file): the tab follows.
            Probe.edit("break_style", 0);
            tryCompare(picker, "currentText", "Default", 5000);
            Probe.edit("break_prompt_list_0", ["from", "elsewhere"]);
            tryCompare(style.styleModel, "promptList", ["from", "elsewhere"], 5000);
        }
    }
}
