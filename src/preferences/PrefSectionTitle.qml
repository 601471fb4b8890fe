import QtQuick
import QtQuick.Controls

// The heading of a group of settings.
Label {
    font.bold: true
    topPadding: 12
}
