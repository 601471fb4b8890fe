import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A time of day as hour and minute, each its own field with up and down
// buttons (and the arrow keys, and the wheel); both wrap around. `picked`
// reports a change the user made; `date` is only read.
RowLayout {
    id: picker

    property date date

    signal picked(int hour, int minute)

    spacing: 2

    SpinBox {
        id: hours
        objectName: "hour"
        from: 0
        to: 23
        wrap: true
        editable: true
        value: picker.date.getHours()
        validator: IntValidator {
            bottom: 0
            top: 23
        }
        textFromValue: value => String(value).padStart(2, "0")
        valueFromText: text => parseInt(text, 10)
        Layout.preferredWidth: 64
        Accessible.name: qsTranslate("Narv", "Hour")
        onValueModified: picker.picked(hours.value, minutes.value)
    }

    Label {
        text: ":"
    }

    SpinBox {
        id: minutes
        objectName: "minute"
        from: 0
        to: 59
        wrap: true
        editable: true
        value: picker.date.getMinutes()
        validator: IntValidator {
            bottom: 0
            top: 59
        }
        textFromValue: value => String(value).padStart(2, "0")
        valueFromText: text => parseInt(text, 10)
        Layout.preferredWidth: 64
        Accessible.name: qsTranslate("Narv", "Minute")
        onValueModified: picker.picked(hours.value, minutes.value)
    }
}
