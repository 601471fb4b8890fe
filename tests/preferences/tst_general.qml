import QtQuick
import QtTest
import Narv.Preferences
import NarvTest

// The General and Workflow tabs: every switch, every stepper and the number
// field, the custom prompt, and settings changed by another program.
Item {
    id: root

    width: 640
    height: 820

    PreferencesView {
        id: view
        anchors.fill: parent
    }

    TestCase {
        id: test

        name: "GeneralAndWorkflow"
        when: windowShown

        function init() {
            Probe.reset();
            view.currentIndex = 0;
        }

        function showTab(symbol) {
            const tab = findChild(view, symbol);
            verify(tab, symbol);
            mouseClick(tab);
            verify(tab.checked);
        }

        function typeText(text) {
            for (const c of text)
                keyClick(c);
        }

        // Clicks into the field, replaces its text and ends with `key`.
        function enter(field, text, key) {
            mouseClick(field);
            verify(field.activeFocus);
            field.selectAll();
            typeText(text);
            keyClick(key);
        }

        function test_switch_data() {
            return [
                { tag: "launchAtLogin", tab: "gearshape.circle", key: "launch_at_login", initial: false },
                { tag: "showTime", tab: "gearshape.circle", key: "show_time_in_status_bar", initial: true },
                { tag: "autoCheckUpdate", tab: "gearshape.circle", key: "auto_check_update", initial: true },
                { tag: "customBreakPrompt", tab: "tray.circle", key: "custom_break_prompt", initial: false },
                { tag: "forceLongBreak", tab: "tray.circle", key: "force_long_break", initial: false },
                { tag: "restartTimerAfterAwake", tab: "tray.circle", key: "restart_timer_after_awake", initial: true },
                { tag: "stopTimerAfterMouseStop", tab: "tray.circle", key: "stop_timer_after_mouse_stop", initial: true },
                { tag: "showNewDayTip", tab: "tray.circle", key: "show_new_day_tip", initial: false }
            ];
        }

        function test_switch(data) {
            showTab(data.tab);
            const box = findChild(view, data.tag);
            verify(box.visible);
            compare(box.checked, data.initial);
            compare(Probe.stored(data.key), undefined, "showing a setting writes nothing");

            mouseClick(box);
            compare(box.checked, !data.initial);
            compare(Probe.stored(data.key), String(!data.initial));
            mouseClick(box);
            compare(Probe.stored(data.key), String(data.initial));

            // Another program (or the status menu) changes it: the box follows,
            // also after the user has clicked it.
            Probe.edit(data.key, !data.initial);
            tryCompare(box, "checked", !data.initial, 5000);
            Probe.edit(data.key, data.initial);
            tryCompare(box, "checked", data.initial, 5000);
        }

        // A switch sets its setting through the setter, which does the rest:
        // launch at login writes the autostart entry, and takes it away.
        function test_sideEffectsComeFromTheSettings() {
            const login = findChild(view, "launchAtLogin");
            mouseClick(login);
            verify(Probe.autostartEntryExists());
            mouseClick(login);
            verify(!Probe.autostartEntryExists());
        }

        function test_stepper_data() {
            return [
                { tag: "workTime", tab: "tray.circle", key: "pref.work.time", initial: 25, delta: 1 },
                { tag: "breakTime", tab: "tray.circle", key: "pref.break.time", initial: 300, delta: 30 },
                { tag: "shortBreakTimes", tab: "tray.circle", key: "pref.short.break.times", initial: 4, delta: 1 },
                { tag: "longBreakTime", tab: "tray.circle", key: "pref.long.break.time", initial: 15, delta: 1 },
                { tag: "target", tab: "drop.circle", key: "pref.water.target", initial: 1500, delta: 50 }
            ];
        }

        function test_stepper(data) {
            showTab(data.tab);
            const stepper = findChild(view, data.tag);
            const field = findChild(stepper, "field");
            compare(field.text, String(data.initial));

            mouseClick(findChild(stepper, "plus"));
            compare(Probe.stored(data.key), String(data.initial + data.delta));
            compare(field.text, String(data.initial + data.delta));
            mouseClick(findChild(stepper, "minus"));
            mouseClick(findChild(stepper, "minus"));
            compare(Probe.stored(data.key), String(data.initial - data.delta));
            compare(field.text, String(data.initial - data.delta));

            Probe.edit(data.key, 7);
            tryCompare(field, "text", "7", 5000);
        }

        // Runs before any water panel exists (tst_water.qml comes later): the
        // panel cannot show a target of 0 and stops the program, by design.
        function test_targetHasNoBounds() {
            showTab("drop.circle");
            const target = findChild(view, "target");
            const minus = findChild(target, "minus");
            for (let i = 0; i < 30; ++i)
                mouseClick(minus);
            compare(Probe.stored("pref.water.target"), "0");
            mouseClick(minus);
            compare(Probe.stored("pref.water.target"), "-50");
            compare(findChild(target, "field").text, "-50");
        }

        function test_numberField() {
            showTab("tray.circle");
            const field = findChild(findChild(view, "workTime"), "field");

            // Return commits and takes the keyboard away from the field.
            enter(field, "40", Qt.Key_Return);
            compare(Probe.stored("pref.work.time"), "40");
            // Through the setting's setter: the work period restarts with it.
            verify(Probe.logMessages().some(m => m.includes("ticktack timer start 2400")));
            verify(!field.activeFocus);
            verify(!field.focused);

            // Not a whole number: nothing is stored, the number comes back.
            enter(field, "abc", Qt.Key_Return);
            compare(Probe.stored("pref.work.time"), "40");
            compare(field.text, "40");
            verify(Probe.logMessages().some(m => m.includes("\"abc\" is not a whole number")));
            enter(field, "12.5", Qt.Key_Return);
            compare(Probe.stored("pref.work.time"), "40");
            compare(field.text, "40");

            // Leaving with Tab commits too, and negative numbers are numbers.
            enter(field, "-5", Qt.Key_Tab);
            verify(!field.activeFocus);
            compare(Probe.stored("pref.work.time"), "-5");

            // Leaving the field without an edit stores nothing: a stored work
            // time would restart the work period.
            Probe.logMessages();
            mouseClick(field);
            keyClick(Qt.Key_Tab);
            verify(!field.activeFocus);
            compare(Probe.stored("pref.work.time"), "-5");
            verify(!Probe.logMessages().some(m => m.includes("ticktack timer start")));
        }

        function test_customPrompt() {
            showTab("tray.circle");
            const box = findChild(view, "customBreakPrompt");
            const prompt = findChild(view, "breakPrompt");
            verify(!prompt.visible, "hidden while the custom prompt is off");

            mouseClick(box);
            verify(prompt.visible);
            compare(prompt.text, "堂堂七尺少年郎, 躺上一躺又何妨");
            mouseClick(prompt);
            prompt.selectAll();
            typeText("Stand up");
            compare(Probe.stored("break_prompt_text"), "Stand up");

            mouseClick(box);
            verify(!prompt.visible);
            compare(Probe.stored("custom_break_prompt"), "false");
            compare(Probe.stored("break_prompt_text"), "Stand up", "switching off keeps the text");
            mouseClick(box);
            verify(prompt.visible);
            compare(prompt.text, "Stand up");
        }
    }
}
