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
                anchors.fill: parent
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

    // The tally rows and the blue's width, following the shared state while
    // the panel is open.
    function test_progress_data() {
        return [
            { tag: "nothing yet", finished: 0, target: 1500, percent: "0", remain: "1500", fraction: 0 },
            { tag: "past the target", finished: 2000, target: 1500, percent: "133", remain: "", fraction: 1 },
            { tag: "truncated, not rounded", finished: 999, target: 1000, percent: "99", remain: "1",
              fraction: 0.999 },
        ];
    }

    function test_progress(row) {
        const window = openPanel();
        water.target = row.target;
        water.finished = row.finished;
        compare(part(window, "percent").text, row.percent);
        compare(part(window, "wellDone").visible, row.remain === "");
        if (row.remain !== "")
            compare(part(window, "remain").text, row.remain);
        const fill = part(window, "bar").width * row.fraction;
        tryVerify(() => Math.abs(part(window, "fill").width - fill) < 0.01, 2000);
    }

    // From the armed job, ticking down by the panel's own clock; shown again
    // near the end, it runs out and the tip says so. Out of the working
    // hours there is no countdown.
    function test_countdown() {
        water.schedule();
        const now = Fixture.setTime(10, 1, 30);
        const window = openPanel();
        const countdown = part(window, "countdown");
        const tip = part(window, "tip");
        compare(countdown.text, "13:30");
        tryCompare(countdown, "text", "13:29", 3000);
        window.hide();
        water.lastClickTimestamp = now - 15 * 60 + 2;
        window.show();
        compare(countdown.text, "00:02");
        tryCompare(tip, "text", "It's time to drink water!", 5000);
        window.hide();
        Fixture.setTime(21, 0, 0);
        window.show();
        tryCompare(tip, "text", "Not in work time!");
        verify(!countdown.visible);
    }

    // A tap only chooses; "Done" adds the chosen amount, re-arms, and the
    // panel goes once the tally has moved. Skip re-arms and leaves the tally;
    // Escape and the close button only close.
    function test_buttons() {
        water.finished = 200;
        const window = openPanel();
        mouseClick(part(window, "amount300"));
        compare(water.lastSelectedAmount, 300);
        compare(Fixture.secondsToJob(), -1);
        mouseClick(part(window, "done"));
        compare(water.finished, 500);
        compare(Fixture.closed(), 0);
        tryVerify(() => Fixture.closed() === 1, 2000);
        compare(Fixture.secondsToJob(), 15 * 60);
        water.cancel();
        mouseClick(part(window, "skip"));
        compare(Fixture.closed(), 2);
        compare(Fixture.secondsToJob(), 15 * 60);
        water.cancel();
        window.requestActivate();
        tryVerify(() => window.view.activeFocus);
        keyClick(Qt.Key_Escape);
        mouseClick(part(window, "close"));
        compare(Fixture.closed(), 4);
        compare(water.finished, 500);
        compare(Fixture.secondsToJob(), -1);
    }
}
