import QtQuick
import QtQuick.Controls
import Narv.Preferences

// A whole number typed in. The edit is committed on Return, which also takes
// the keyboard away from the field, and when the field loses the keyboard
// (Tab, a click elsewhere). Text that is not a whole number changes nothing:
// the stored number comes back.
TextField {
    id: field

    // The number edited: a property of a settings object.
    property IntegerBinding binding
    // True while the field has the keyboard.
    readonly property bool focused: activeFocus

    function commit() {
        if (binding)
            binding.commit(text);
        // Shows the stored number again, also after text that was refused or
        // that spelled the same number differently ("025").
        text = Qt.binding(() => field.binding ? field.binding.text : "");
    }

    implicitWidth: 80
    horizontalAlignment: TextInput.AlignRight
    selectByMouse: true
    inputMethodHints: Qt.ImhFormattedNumbersOnly
    text: binding ? binding.text : ""

    onAccepted: {
        commit();
        focus = false;
    }
    onActiveFocusChanged: {
        if (!activeFocus)
            commit();
    }
}
