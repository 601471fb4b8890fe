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
        id: test

        name: "Style"
        when: windowShown

        property var style
        property var sheet

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
            PrefEnvironment.styleState.setPromptList(["a", "b", "a", "c"]);
            PrefEnvironment.styleState.setNewDayPromptList(["morning"]);
            tryCompare(style.styleModel, "promptList", ["a", "b", "a", "c"]);
        }

        function typeText(text) {
            for (const c of text)
                keyClick(c);
        }

        function row(index) {
            const list = findChild(style, "promptList");
            list.forceLayout();
            const item = list.itemAtIndex(index);
            verify(item, "row " + index);
            return item;
        }

        function openEditorOn(index) {
            mouseClick(findChild(row(index), "edit"));
            tryCompare(sheet, "opened", true);
        }

        function test_newPromptGoesOnTop() {
            mouseClick(findChild(style, "addPrompt"));
            tryCompare(sheet, "opened", true);
            compare(sheet.text, "", "a new prompt starts empty");
            typeText("d");
            mouseClick(findChild(sheet.footer, "ok"));
            tryCompare(sheet, "visible", false);
            compare(Probe.stored("break_prompt_list_0"), ["d", "a", "b", "a", "c"]);
            compare(style.styleModel.promptList, ["d", "a", "b", "a", "c"]);

            // A text that is already there goes in a second time.
            mouseClick(findChild(style, "addPrompt"));
            tryCompare(sheet, "opened", true);
            typeText("c");
            keyClick(Qt.Key_Return);
            tryCompare(sheet, "visible", false);
            compare(Probe.stored("break_prompt_list_0"), ["c", "d", "a", "b", "a", "c"]);
        }

        function test_emptyCommitChangesNothing() {
            mouseClick(findChild(style, "addPrompt"));
            tryCompare(sheet, "opened", true);
            mouseClick(findChild(sheet.footer, "ok"));
            tryCompare(sheet, "visible", false);

            openEditorOn(1);
            compare(sheet.text, "b");
            sheet.editor.selectAll();
            keyClick(Qt.Key_Delete);
            compare(sheet.text, "");
            mouseClick(findChild(sheet.footer, "ok"));
            tryCompare(sheet, "visible", false);

            compare(Probe.stored("break_prompt_list_0"), ["a", "b", "a", "c"]);
            compare(style.styleModel.promptList, ["a", "b", "a", "c"]);
        }

        function test_editOfADuplicateChangesTheFirstOnly() {
            // The third row is the second "a": the first one is the one edited.
            openEditorOn(2);
            compare(sheet.text, "a");
            sheet.editor.selectAll();
            typeText("x");
            keyClick(Qt.Key_Return);
            tryCompare(sheet, "visible", false);
            compare(Probe.stored("break_prompt_list_0"), ["x", "b", "a", "c"]);

            // An edit keeps its place.
            openEditorOn(3);
            sheet.editor.selectAll();
            typeText("y");
            mouseClick(findChild(sheet.footer, "ok"));
            tryCompare(sheet, "visible", false);
            compare(Probe.stored("break_prompt_list_0"), ["x", "b", "a", "y"]);
        }

        function test_deleteRemovesEveryCopy() {
            mouseClick(findChild(row(2), "trash"));
            compare(Probe.stored("break_prompt_list_0"), ["b", "c"]);
            compare(style.styleModel.promptList, ["b", "c"]);
            mouseClick(findChild(row(0), "trash"));
            mouseClick(findChild(row(0), "trash"));
            compare(Probe.stored("break_prompt_list_0"), []);
            compare(style.styleModel.promptList, [], "an empty list stays empty");
        }

        function test_cancelAndEscapeDropTheEdit() {
            openEditorOn(0);
            typeText("zzz");
            mouseClick(findChild(sheet.footer, "cancel"));
            tryCompare(sheet, "visible", false);
            compare(style.styleModel.editText, undefined);

            openEditorOn(1);
            typeText("zzz");
            // The list behind the sheet takes no clicks while it is open.
            mouseClick(findChild(row(1), "trash"));
            verify(sheet.opened);
            keyClick(Qt.Key_Escape);
            tryCompare(sheet, "visible", false);
            compare(style.styleModel.editText, undefined);

            compare(Probe.stored("break_prompt_list_0"), ["a", "b", "a", "c"]);
        }

        function test_resetRestoresTheShownListOnly() {
            mouseClick(findChild(style, "resetPrompts"));
            compare(Probe.stored("break_prompt_list_0"), Probe.builtInPrompts(0));
            compare(Probe.stored("new_day_break_prompt_list_0"), ["morning"]);

            PrefEnvironment.styleState.setPromptList(["a"]);
            mouseClick(findChild(style, "newDay"));
            mouseClick(findChild(style, "resetPrompts"));
            compare(Probe.stored("new_day_break_prompt_list_0"), Probe.builtInNewDayPrompts(0));
            compare(Probe.stored("break_prompt_list_0"), ["a"]);
        }

        function test_segmentSwitchChangesNeither() {
            mouseClick(findChild(style, "newDay"));
            compare(style.styleModel.promptSelectIdx, 1);
            compare(style.styleModel.promptList, ["morning"]);
            mouseClick(findChild(style, "breakPrompts"));
            compare(style.styleModel.promptList, ["a", "b", "a", "c"]);
            compare(Probe.stored("break_prompt_list_0"), ["a", "b", "a", "c"]);
            compare(Probe.stored("new_day_break_prompt_list_0"), ["morning"]);

            // Edits on the new-day list go to the new-day list.
            mouseClick(findChild(style, "newDay"));
            mouseClick(findChild(row(0), "trash"));
            compare(Probe.stored("new_day_break_prompt_list_0"), []);
            compare(Probe.stored("break_prompt_list_0"), ["a", "b", "a", "c"]);
        }

        function test_styleChoice() {
            const picker = findChild(style, "breakStyle");
            compare(picker.currentText, "Default");
            picker.forceActiveFocus();
            keyClick(Qt.Key_Down);
            compare(Probe.stored("break_style"), "1");
            compare(picker.currentText, "Relaxation");
            // Nothing stored for this style yet: its built-in texts show, and the
            // first style's list is left as it was.
            compare(style.styleModel.promptList, Probe.builtInPrompts(1));
            compare(Probe.stored("break_prompt_list_1"), undefined);
            compare(Probe.stored("break_prompt_list_0"), ["a", "b", "a", "c"]);

            mouseClick(findChild(row(0), "trash"));
            compare(Probe.stored("break_prompt_list_1"), Probe.builtInPrompts(1).slice(1));

            // Chosen elsewhere (the settings file): the tab follows.
            Probe.edit("break_style", 0);
            tryCompare(picker, "currentText", "Default", 5000);
            compare(style.styleModel.promptList, ["a", "b", "a", "c"]);
            Probe.edit("break_prompt_list_0", ["from", "elsewhere"]);
            tryCompare(style.styleModel, "promptList", ["from", "elsewhere"], 5000);
        }
    }
}
