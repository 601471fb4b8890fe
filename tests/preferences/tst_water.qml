import QtQuick
import QtTest
import Narv.Preferences
import NarvTest

// The Water tab: what it shows on a fresh install, the reminder switched on
// and off, the working hours re-arming the reminder, and the interval chips.
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

        name: "Water"
        when: windowShown

        property var water

        function initTestCase() {
            water = findChild(view, "water");
        }

        function init() {
            Probe.reset();
            // The water panel takes the keyboard when it opens; keys go to
            // this window again.
            root.Window.window.requestActivate();
            tryVerify(() => root.Window.window.active);
            view.currentIndex = 3;
            verify(water.visible);
        }

        function cleanup() {
            view.currentIndex = 0;
        }

        function picker(name) {
            return findChild(water, name);
        }

        function messages() {
            return Probe.logMessages();
        }

        function test_switchOnAndOff() {
            mouseClick(findChild(water, "enable"));
            verify(Probe.hasWaterItem());
            compare(Probe.waterReminderDue(), "10:15");

            Probe.showWaterView();
            verify(Probe.waterViewVisible());
            mouseClick(findChild(water, "enable"));
            compare(Probe.stored("pref.water.enable"), "false");
            verify(!Probe.hasWaterItem());
            tryVerify(() => !Probe.waterViewVisible(), 5000, "the open panel closes");
            compare(Probe.waterReminderDue(), "", "the pending reminder is cancelled");

            // Switched on by another program while the tab is open: the same.
            Probe.edit("pref.water.enable", true);
            tryVerify(() => Probe.hasWaterItem(), 5000);
            compare(Probe.waterReminderDue(), "10:15");
        }

        function test_workingHoursRearm() {
            mouseClick(findChild(water, "enable"));
            compare(Probe.waterReminderDue(), "10:15");

            // 21:00, hours 07:00 to 20:00: moving the end to 22:00 re-arms the
            // reminder one interval from now.
            Probe.setNow("21:00");
            const end = picker("endTime");
            end.forceActiveFocus();
            keyClick(Qt.Key_Up);
            // At 21:00 sharp with the end at 21:00 it is not working time.
            compare(Probe.waterReminderDue(), "");
            compare(Probe.waterItemTitle(), "Water (0% Out of hours)");
            keyClick(Qt.Key_Up);
            compare(end.displayText, "22:00");
            compare(Probe.waterReminderDue(), "21:15");
            compare(Probe.waterItemTitle(), "Water (0% )");
            const stored = new Date(Number(Probe.stored("pref.water.interval.end")) * 1000);
            compare(stored.getHours(), 22);
            compare(stored.getMinutes(), 0);

            // And back to 20:00 cancels it.
            mouseClick(end.down.indicator);
            mouseClick(end.down.indicator);
            compare(end.displayText, "20:00");
            compare(Probe.waterReminderDue(), "");
            compare(Probe.waterItemTitle(), "Water (0% Out of hours)");
        }

        function test_workingHoursWhileOff() {
            // A click on the minutes, then the buttons step them.
            const start = picker("startTime");
            const text = findChild(start, "text");
            mouseClick(text, text.positionToRectangle(4).x, text.height / 2);
            mouseClick(start.up.indicator);
            compare(start.displayText, "07:01");
            verify(messages().includes("waterState.enable is false"));
            compare(Probe.waterReminderDue(), "");
            verify(!Probe.hasWaterItem());
            // Stored all the same.
            const stored = new Date(Number(Probe.stored("pref.water.interval.start")) * 1000);
            compare(stored.getHours(), 7);
            compare(stored.getMinutes(), 1);
        }

        // Typed in and taken with Return; a step past midnight goes round
        // the clock and keeps the minutes.
        function test_timeTypedAndRoundTheClock() {
            const start = picker("startTime");
            start.forceActiveFocus();
            keySequence("Ctrl+A");
            keyClick(Qt.Key_2);
            keyClick(Qt.Key_3);
            keyClick(Qt.Key_Colon);
            keyClick(Qt.Key_3);
            keyClick(Qt.Key_0);
            keyClick(Qt.Key_Return);
            compare(start.displayText, "23:30");
            keyClick(Qt.Key_Up);
            compare(start.displayText, "00:30");
            const stored = new Date(Number(Probe.stored("pref.water.interval.start")) * 1000);
            compare(stored.getHours(), 0);
            compare(stored.getMinutes(), 30);
        }

        function test_chips() {
            mouseClick(findChild(water, "enable"));
            compare(Probe.waterReminderDue(), "10:15");

            const chip60 = findChild(water, "chip60");
            mouseClick(chip60);
            compare(Probe.stored("pref.water.selectedInterval"), "60");
            compare(Probe.waterReminderDue(), "10:15", "the pending reminder keeps its time");
            const highlight = findChild(water, "highlight");
            tryCompare(highlight, "x", chip60.x);
            tryCompare(highlight, "y", chip60.y);

            // The next arming uses the new interval.
            Probe.setNow("10:15");
            mouseClick(findChild(water, "enable"));
            mouseClick(findChild(water, "enable"));
            compare(Probe.waterReminderDue(), "11:15");

            // From the keyboard: Tab to a chip, Space picks it.
            const chip90 = findChild(water, "chip90");
            chip60.forceActiveFocus();
            keyClick(Qt.Key_Tab);
            verify(chip90.activeFocus);
            keyClick(Qt.Key_Space);
            compare(Probe.stored("pref.water.selectedInterval"), "90");
        }

        function test_onlyWhileShown() {
            // With another tab in front, a change made elsewhere is not the
            // tab's to act on.
            view.currentIndex = 0;
            verify(!water.visible);
            Probe.edit("pref.water.enable", true);
            tryVerify(() => PrefEnvironment.waterState.enable, 5000);
            verify(!Probe.hasWaterItem());
            compare(Probe.waterReminderDue(), "");
        }
    }
}
