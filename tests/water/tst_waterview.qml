import QtQuick
import QtTest
import Narv.Water
import WaterTest

TestCase {
    id: testCase
    name: "WaterView"
    when: windowShown

    readonly property PrefWaterState water: WaterPanel.waterState

    Component {
        id: panelWindow

        Window {
            property alias view: view

            width: 280
            height: 330

            WaterView {
                id: view
                width: 280
                height: 330
            }
        }
    }

    function init() {
        Fixture.reset();
    }

    function openPanel() {
        const window = createTemporaryObject(panelWindow, testCase);
        window.show();
        tryVerify(() => window.visible);
        // The grid places its chips when the first frame is drawn.
        waitForRendering(window.view);
        return window;
    }

    function part(window, name) {
        const item = findChild(window.view, name);
        verify(item, "no " + name);
        return item;
    }

    // The tally rows: texts, the blue's width and the cup above its end. The
    // bar and the cup are animated, so they are waited for.
    function test_progress_data() {
        return [
            { tag: "nothing yet", finished: 0, target: 1500, finishedText: "0", percent: "0",
              remain: "1500", fraction: 0 },
            { tag: "target reached", finished: 1500, target: 1500, finishedText: "1500",
              percent: "100", remain: "", fraction: 1 },
            { tag: "past the target", finished: 2000, target: 1500, finishedText: "2000",
              percent: "133", remain: "", fraction: 1 },
            { tag: "truncated, not rounded", finished: 999, target: 1000, finishedText: "999",
              percent: "99", remain: "1", fraction: 0.999 },
        ];
    }

    function test_progress(row) {
        const window = openPanel();
        // Set while the panel is open: it follows the shared state.
        water.target = row.target;
        water.finished = row.finished;
        compare(part(window, "finished").text, row.finishedText);
        compare(part(window, "percent").text, row.percent);
        const remain = part(window, "remain");
        const wellDone = part(window, "wellDone");
        compare(remain.visible, row.remain !== "");
        compare(wellDone.visible, row.remain === "");
        if (row.remain !== "")
            compare(remain.text, row.remain);
        else
            compare(wellDone.text, "Well Done!");

        const bar = part(window, "bar");
        compare(bar.width, 280 - 16);
        const fill = bar.width * row.fraction;
        tryVerify(() => Math.abs(part(window, "fill").width - fill) < 0.01, 2000,
                  "the blue is " + part(window, "fill").width + ", not " + fill);
        tryVerify(() => Math.abs(part(window, "cup").x - Math.max(fill - 15, 0)) < 0.01, 2000,
                  "the cup is at " + part(window, "cup").x);
    }

    function test_countdownFromTheArmedJob() {
        water.schedule();
        verify(Fixture.jobArmed());
        compare(Fixture.secondsToJob(), 15 * 60);
        Fixture.setTime(10, 1, 30);
        const window = openPanel();
        const countdown = part(window, "countdown");
        const tip = part(window, "tip");
        compare(countdown.text, "13:30");
        verify(countdown.visible);
        compare(tip.text, "Next drink in");
        verify(!tip.font.bold);
        // The panel's own clock ticks it down, one second at a time.
        tryCompare(countdown, "text", "13:29", 3000);

        // Shown again near the end: it runs out, and the tip says so.
        window.hide();
        tryVerify(() => !countdown.visible);
        water.lastClickTimestamp = Fixture.nowSeconds() - 15 * 60 + 2;
        window.show();
        verify(countdown.visible);
        compare(countdown.text, "00:02");
        tryCompare(tip, "text", "It's time to drink water!", 5000);
        verify(!countdown.visible);
        verify(tip.font.bold);
    }

    function test_countdownFollowsTheWorkingHours() {
        Fixture.setTime(21, 0, 0);
        const window = openPanel();
        const tip = part(window, "tip");
        compare(tip.text, "Not in work time!");
        verify(!part(window, "countdown").visible);
        verify(Fixture.logMessages().indexOf("Not in work time") >= 0);

        // Hours moved to include the present: the countdown starts over.
        water.lastClickTimestamp = Fixture.nowSeconds() - 60;
        water.intervalEndDate = new Date(2026, 10, 23, 22, 0, 0);
        compare(tip.text, "Next drink in");
        compare(part(window, "countdown").text, "14:00");
    }

    function test_chipTapChoosesAndDoneDrinks() {
        const window = openPanel();
        const highlight = part(window, "highlight");
        const chip150 = part(window, "amount150");
        const chip300 = part(window, "amount300");
        compare(chip150.text, "150ml");
        verify(chip150.isSelected);
        verify(!chip300.isSelected);
        const at150 = chip150.mapToItem(highlight.parent, 0, 0);
        const at300 = chip300.mapToItem(highlight.parent, 0, 0);
        compare(highlight.y, at150.y);
        verify(at300.y > at150.y, "300 is not on a later row");

        mouseClick(chip300);
        compare(water.lastSelectedAmount, 300);
        verify(chip300.isSelected);
        verify(!chip150.isSelected);
        // One highlight, on its way from the old chip to the new one.
        verify(highlight.y < at300.y, "the highlight jumped");
        tryVerify(() => Math.abs(highlight.y - at300.y) < 0.01 && Math.abs(highlight.x - at300.x) < 0.01,
                  2000);
        compare(highlight.width, chip300.width);
        // A tap only chooses.
        compare(water.finished, 0);
        verify(!Fixture.jobArmed());

        water.finished = 200;
        mouseClick(part(window, "done"));
        compare(water.finished, 500);
        compare(Fixture.closed, 0);
        tryCompare(Fixture, "closed", 1, 2000);
        verify(Fixture.jobArmed());
        compare(Fixture.secondsToJob(), 15 * 60);
        compare(water.lastClickTimestamp, Fixture.nowSeconds());
    }

    function test_skipLeavesTheTally() {
        water.finished = 450;
        water.lastClickTimestamp = Fixture.nowSeconds() - 20 * 60;
        const window = openPanel();
        Fixture.setTime(10, 3, 0);
        mouseClick(part(window, "skip"));
        compare(Fixture.closed, 1);
        compare(water.finished, 450);
        verify(Fixture.jobArmed());
        compare(water.lastClickTimestamp, Fixture.nowSeconds());
        compare(Fixture.secondsToJob(), 15 * 60);
        wait(700);
        compare(Fixture.closed, 1);
    }

    // The panel has no title bar: its close button and Escape only close it.
    function test_closeWithoutDrinking() {
        water.finished = 300;
        const window = openPanel();
        window.requestActivate();
        tryVerify(() => window.view.activeFocus);
        keyClick(Qt.Key_Escape);
        compare(Fixture.closed, 1);
        mouseClick(part(window, "close"));
        compare(Fixture.closed, 2);
        compare(water.finished, 300);
        verify(!Fixture.jobArmed());
    }

    function test_amountsFollowTheSettings() {
        water.lastSelectedAmount = 175;
        const window = openPanel();
        // An amount edited by hand that is not offered: no chip is chosen.
        verify(!part(window, "highlight").visible);
        verify(!part(window, "amount150").isSelected);
    }
}
