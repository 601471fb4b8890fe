import QtQuick
import QtTest
import Narv.Preferences
import NarvTest

// The General, Workflow and Water tabs: every switch and stepper the same
// way, the number field, and the water reminder armed, re-armed and
// cancelled from its tab.
Item {
    id: root

    width: 640
    height: 820

    PreferencesView {
        id: view
        anchors.fill: parent
    }

    TestCase {
        name: "GeneralWorkflowWater"
        when: windowShown

        function init() {
            Probe.reset();
            // The water panel takes the keyboard when it opens; keys go to
            // this window again.
            root.Window.window.requestActivate();
            tryVerify(() => root.Window.window.active);
            view.currentIndex = 0;
        }

        function showTab(symbol) {
            const tab = findChild(view, symbol);
            mouseClick(tab);
            verify(tab.checked, symbol);
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
            const general = "gearshape.circle", workflow = "tray.circle";
            return [
                { tag: "launchAtLogin", tab: general, key: "launch_at_login", initial: false },
                { tag: "showTime", tab: general, key: "show_time_in_status_bar", initial: true },
                { tag: "autoCheckUpdate", tab: general, key: "auto_check_update", initial: true },
                { tag: "customBreakPrompt", tab: workflow, key: "custom_break_prompt", initial: false },
                { tag: "forceLongBreak", tab: workflow, key: "force_long_break", initial: false },
                { tag: "restartTimerAfterAwake", tab: workflow, key: "restart_timer_after_awake", initial: true },
                { tag: "stopTimerAfterMouseStop", tab: workflow, key: "stop_timer_after_mouse_stop", initial: true },
                { tag: "showNewDayTip", tab: workflow, key: "show_new_day_tip", initial: false }
            ];
        }

        // Showing writes nothing; a click writes the setting; another program
        // (or the status menu) changing it moves the box, also after a click.
        function test_switch(data) {
            showTab(data.tab);
            const box = findChild(view, data.tag);
            compare(box.checked, data.initial);
            compare(Probe.stored(data.key), undefined);
            mouseClick(box);
            compare(box.checked, !data.initial);
            compare(Probe.stored(data.key), String(!data.initial));
            // Through the setting's setter, which does the rest.
            if (data.tag === "launchAtLogin")
                verify(Probe.autostartEntryExists());
            Probe.edit(data.key, data.initial);
            tryCompare(box, "checked", data.initial, 5000);
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
            mouseClick(findChild(stepper, "minus"));
            mouseClick(findChild(stepper, "minus"));
            compare(Probe.stored(data.key), String(data.initial - data.delta));
            compare(field.text, String(data.initial - data.delta));
            Probe.edit(data.key, 7);
            tryCompare(field, "text", "7", 5000);
        }

        function test_numberField() {
            showTab("tray.circle");
            const field = findChild(findChild(view, "workTime"), "field");
            // Return commits, through the setter (the work period restarts),
            // and takes the keyboard away from the field.
            enter(field, "40", Qt.Key_Return);
            compare(Probe.stored("pref.work.time"), "40");
            verify(Probe.logMessages().some(m => m.includes("ticktack timer start 2400")));
            verify(!field.activeFocus);
            // Not a whole number: nothing is stored, the number comes back.
            enter(field, "12.5", Qt.Key_Return);
            compare(field.text, "40");
            verify(Probe.logMessages().some(m => m.includes("\"12.5\" is not a whole number")));
            // Tab commits too; leaving without an edit stores nothing.
            enter(field, "-5", Qt.Key_Tab);
            compare(Probe.stored("pref.work.time"), "-5");
            Probe.logMessages();
            mouseClick(field);
            keyClick(Qt.Key_Tab);
            verify(!Probe.logMessages().some(m => m.includes("ticktack timer start")));
        }

        function test_waterSwitch() {
            showTab("drop.circle");
            const enable = findChild(view, "enable");
            mouseClick(enable);
            verify(Probe.waterItemTitle());
            compare(Probe.waterReminderDue(), "10:15");
            Probe.showWaterView();
            verify(Probe.waterViewVisible());
            mouseClick(enable);
            verify(!Probe.waterItemTitle());
            tryVerify(() => !Probe.waterViewVisible(), 5000, "the open panel closes");
            compare(Probe.waterReminderDue(), "", "the pending reminder is cancelled");
            // Switched on by another program while the tab is open: the same.
            Probe.edit("pref.water.enable", true);
            tryVerify(() => Probe.waterItemTitle(), 5000);
            compare(Probe.waterReminderDue(), "10:15");
        }

        // At 21:00, hours 07:00 to 20:00: the end moved to 22:00 re-arms the
        // reminder one interval from now, and back to 20:00 cancels it.
        function test_workingHoursRearm() {
            showTab("drop.circle");
            mouseClick(findChild(view, "enable"));
            Probe.setNow("21:00");
            const end = findChild(view, "endTime");
            end.forceActiveFocus();
            keyClick(Qt.Key_Up);
            compare(Probe.waterReminderDue(), "", "21:00 sharp is not working time");
            keyClick(Qt.Key_Up);
            compare(end.displayText, "22:00");
            compare(Probe.waterReminderDue(), "21:15");
            compare(Probe.waterItemTitle(), "Water (0% )");
            const stored = new Date(Number(Probe.stored("pref.water.interval.end")) * 1000);
            compare(stored.getHours(), 22);
            mouseClick(end.down.indicator);
            mouseClick(end.down.indicator);
            compare(Probe.waterReminderDue(), "");
            compare(Probe.waterItemTitle(), "Water (0% Out of hours)");
        }

        // The next arming uses the chosen interval, the pending one keeps its time.
        function test_chips() {
            showTab("drop.circle");
            mouseClick(findChild(view, "enable"));
            mouseClick(findChild(view, "chip60"));
            compare(Probe.stored("pref.water.selectedInterval"), "60");
            compare(Probe.waterReminderDue(), "10:15");
            Probe.setNow("10:15");
            mouseClick(findChild(view, "enable"));
            mouseClick(findChild(view, "enable"));
            compare(Probe.waterReminderDue(), "11:15");
        }
    }
}
