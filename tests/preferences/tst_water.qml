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

        function hourOf(pickerName) {
            return findChild(findChild(water, pickerName), "hour");
        }

        function messages() {
            return Probe.logMessages();
        }

        function test_freshInstall() {
            compare(findChild(water, "enable").checked, false);
            compare(findChild(findChild(water, "target"), "field").text, "1500");
            compare(findChild(water, "mode").currentText, "Interval");
            compare(findChild(water, "mode").count, 1, "one mode is offered");
            compare(findChild(water, "modeTip").text, "Will remind you every selected time interval");
            compare(hourOf("startTime").displayText, "07");
            compare(findChild(findChild(water, "startTime"), "minute").displayText, "00");
            compare(hourOf("endTime").displayText, "20");
            compare(findChild(findChild(water, "endTime"), "minute").displayText, "00");

            const labels = [15, 30, 45, 60, 90, 120].map(v => findChild(water, "chip" + v));
            compare(labels.map(chip => chip.Accessible.name),
                    ["15min", "30min", "45min", "60min", "90min", "120min"]);
            // Three columns of 70.
            compare(labels[0].width, 70);
            compare(labels[1].x - labels[0].x, 78);
            compare(labels[3].x, labels[0].x);
            verify(labels[3].y > labels[0].y);
            const highlight = findChild(water, "highlight");
            verify(highlight.visible);
            tryCompare(highlight, "x", labels[0].x);
            tryCompare(highlight, "y", labels[0].y);
        }

        // Every row's controls start at one x, the tab's `feature` guide.
        function test_rowsLineUp() {
            const names = ["enable", "target", "mode", "modeTip", "startTime", "endTime", "intervals"];
            const xs = names.map(name => findChild(water, name).mapToItem(view, 0, 0).x);
            verify(xs[0] > 20);
            for (let i = 1; i < names.length; ++i)
                compare(xs[i], xs[0], names[i]);
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
            const endHour = hourOf("endTime");
            endHour.forceActiveFocus();
            keyClick(Qt.Key_Up);
            // At 21:00 sharp with the end at 21:00 it is not working time.
            compare(Probe.waterReminderDue(), "");
            compare(Probe.waterItemTitle(), "Water (0% Out of hours)");
            keyClick(Qt.Key_Up);
            compare(endHour.displayText, "22");
            compare(Probe.waterReminderDue(), "21:15");
            compare(Probe.waterItemTitle(), "Water (0% )");
            const end = new Date(Number(Probe.stored("pref.water.interval.end")) * 1000);
            compare(end.getHours(), 22);
            compare(end.getMinutes(), 0);

            // And back to 20:00 cancels it.
            mouseClick(endHour.down.indicator);
            mouseClick(endHour.down.indicator);
            compare(endHour.displayText, "20");
            compare(Probe.waterReminderDue(), "");
            compare(Probe.waterItemTitle(), "Water (0% Out of hours)");
        }

        function test_workingHoursWhileOff() {
            const startMinute = findChild(findChild(water, "startTime"), "minute");
            mouseClick(startMinute.up.indicator);
            compare(startMinute.displayText, "01");
            verify(messages().includes("waterState.enable is false"));
            compare(Probe.waterReminderDue(), "");
            verify(!Probe.hasWaterItem());
            // Stored all the same.
            const start = new Date(Number(Probe.stored("pref.water.interval.start")) * 1000);
            compare(start.getHours(), 7);
            compare(start.getMinutes(), 1);
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
