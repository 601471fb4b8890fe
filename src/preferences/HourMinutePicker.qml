import QtQuick
import QtQuick.Controls

// A time of day, "07:30", in one small field: typed in (Return or leaving
// the field takes it), or stepped with the arrow keys, the wheel or the
// buttons at its side. A step moves the hour, or the minutes once the user
// has put the text cursor there (a click, the Right key), and goes round the
// clock. `picked` reports a change the user made; `date` is only read.
SpinBox {
    id: picker

    property date date
    // What a step moves: "hour" or "minute".
    property string part: "hour"

    signal picked(int hour, int minute)

    function minuteOfDay(value) {
        return ((value % 1440) + 1440) % 1440;
    }

    // Unbounded, so that a step past midnight comes back into the day in
    // onValueModified with the other part as it was.
    from: -100000
    to: 100000
    value: date.getHours() * 60 + date.getMinutes()
    stepSize: part === "minute" ? 1 : 60
    editable: true
    implicitWidth: 80
    inputMethodHints: Qt.ImhTime
    validator: RegularExpressionValidator {
        regularExpression: /^([01]?[0-9]|2[0-3])(:[0-5]?[0-9]?)?$/
    }
    textFromValue: value => {
        const minutes = minuteOfDay(value);
        return String(Math.floor(minutes / 60)).padStart(2, "0") + ":"
                + String(minutes % 60).padStart(2, "0");
    }
    valueFromText: text => {
        const parts = text.split(":");
        const hour = parseInt(parts[0], 10);
        const minute = parts.length > 1 && parts[1] !== "" ? parseInt(parts[1], 10) : 0;
        return isNaN(hour) || isNaN(minute) ? picker.value : hour * 60 + minute;
    }
    onValueModified: {
        const minutes = minuteOfDay(value);
        picked(Math.floor(minutes / 60), minutes % 60);
    }
    onActiveFocusChanged: {
        if (activeFocus)
            part = "hour";
    }
    Accessible.name: qsTranslate("Narv", "Hour") + ":" + qsTranslate("Narv", "Minute")

    contentItem: TextInput {
        objectName: "text"
        z: 2
        text: picker.displayText
        font: picker.font
        color: picker.palette.text
        selectionColor: picker.palette.highlight
        selectedTextColor: picker.palette.highlightedText
        horizontalAlignment: Qt.AlignHCenter
        verticalAlignment: Qt.AlignVCenter
        readOnly: !picker.editable
        validator: picker.validator
        inputMethodHints: picker.inputMethodHints
        selectByMouse: true
        clip: width < implicitWidth

        Keys.onLeftPressed: event => {
            picker.part = "hour";
            event.accepted = false;
        }
        Keys.onRightPressed: event => {
            picker.part = "minute";
            event.accepted = false;
        }
        TapHandler {
            onTapped: point => picker.part = parent.positionAt(point.position.x, point.position.y) > 2
                      ? "minute" : "hour"
        }
    }
}
