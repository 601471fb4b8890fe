#pragma once

#include "settings/PrefInterruptState.h"
#include "settings/PrefState.h"
#include "settings/PrefStyleState.h"
#include "settings/PrefWaterState.h"

#include <QObject>
#include <QString>
#include <QtQml/qqml.h>

#include <optional>

class QJSEngine;
class QQmlEngine;

// The core's settings objects as QML types. There is one of each, owned by
// AppState; QML only ever gets them from PrefEnvironment.
struct PrefStateQmlType {
    Q_GADGET
    QML_FOREIGN(PrefState)
    QML_NAMED_ELEMENT(PrefState)
    QML_UNCREATABLE("the settings are AppState::prefState()")
};

struct PrefStyleStateQmlType {
    Q_GADGET
    QML_FOREIGN(PrefStyleState)
    QML_NAMED_ELEMENT(PrefStyleState)
    QML_UNCREATABLE("the style settings are AppState::prefState()->styleState()")
};

struct PrefWaterStateQmlType {
    Q_GADGET
    QML_FOREIGN(PrefWaterState)
    QML_NAMED_ELEMENT(PrefWaterState)
    QML_UNCREATABLE("the water settings are AppState::waterState()")
};

struct PrefInterruptStateQmlType {
    Q_GADGET
    QML_FOREIGN(PrefInterruptState)
    QML_NAMED_ELEMENT(PrefInterruptState)
    QML_UNCREATABLE("the interruption settings are PrefInterruptState::instance()")
};

// What every tab of the settings window reads: the settings objects the
// controls bind to, and the few facts the About tab shows that AboutInfo does
// not have.
class PrefEnvironment : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(PrefState *prefState READ prefState CONSTANT)
    Q_PROPERTY(PrefStyleState *styleState READ styleState CONSTANT)
    Q_PROPERTY(PrefWaterState *waterState READ waterState CONSTANT)
    Q_PROPERTY(PrefInterruptState *interruptState READ interruptState CONSTANT)
    Q_PROPERTY(QString versionLine READ versionLine CONSTANT)
    Q_PROPERTY(QString iconFontFamily READ iconFontFamily CONSTANT)
    Q_PROPERTY(QString iconGlyph READ iconGlyph CONSTANT)
public:
    static PrefEnvironment *create(QQmlEngine *qmlEngine, QJSEngine *jsEngine);

    PrefState *prefState() const;
    PrefStyleState *styleState() const;
    PrefWaterState *waterState() const;
    PrefInterruptState *interruptState() const;

    // "v0.1.0(1)": the version and the build number, no spaces.
    static QString versionLine();
    // The icon font's family and its emblem, the About tab's icon when there
    // is no icon image.
    static QString iconFontFamily();
    static QString iconGlyph();

    // Whether Narv is registered to start at login, asked of the desktop: the
    // autostart entry exists and is not switched off. Empty inside Flatpak,
    // where the Background portal cannot be asked.
    static std::optional<bool> loginItemRegistered();
    // Runs when the settings window opens. A login item removed or added
    // behind Narv's back (the desktop's session settings, a deleted file)
    // would leave "Launch at login" showing what is not so; the switch then
    // takes the desktop's state, stored without registering anything.
    Q_INVOKABLE static void syncLoginItem();

private:
    using QObject::QObject;
};
