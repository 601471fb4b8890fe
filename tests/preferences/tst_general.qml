import QtQuick
import QtTest
import Narv.Preferences
import NarvTest

// The General, Workflow and Water tabs: every switch and stepper the same
// way, and the water reminder armed and cancelled from its tab.
Item {
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
            view.currentIndex = 0;
        }

        function showTab(symbol) {
            const tab = findChild(view, symbol);
            mouseClick(tab);
            verify(tab.checked, symbol);
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

        // Showing writes nothing; a click writes the setting, through its
        // setter (only the login item's makes an entry); another program (or
        // the status menu) changing it moves the box, also after a click.
        function test_switch(data) {
            showTab(data.tab);
            const box = findChild(view, data.tag);
            compare(box.checked, data.initial);
            compare(Probe.stored(data.key), undefined);
            mouseClick(box);
            compare(Probe.stored(data.key), String(!data.initial));
            compare(Probe.autostartEntryExists(), data.tag === "launchAtLogin");
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

        // On: the menu item, the reminder armed. Off: the item gone, the open
        // panel closed, the reminder cancelled. On from another program: the same.
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
            compare(Probe.waterReminderDue(), "");
            Probe.edit("pref.water.enable", true);
            tryVerify(() => Probe.waterItemTitle(), 5000);
            compare(Probe.waterReminderDue(), "10:15");
        }
    }
}
