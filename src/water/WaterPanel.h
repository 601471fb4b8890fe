#pragma once

#include "settings/PrefWaterState.h"

#include <QObject>
#include <QSize>
#include <QtQml/qqml.h>

class DelayedTask;
class QJSEngine;
class QQmlEngine;

// The core's water settings as a QML type; there is one, AppState's, and QML
// only ever gets it from WaterPanel. (The settings window's module describes
// the same class under the same name for its own views, hence this struct's
// name.)
struct WaterPanelStateForeign {
    Q_GADGET
    QML_FOREIGN(PrefWaterState)
    QML_NAMED_ELEMENT(PrefWaterState)
    QML_UNCREATABLE("the water settings are AppState::waterState()")
};

// What the water panel (WaterView.qml and its parts) works with: the shared
// water settings, the arithmetic that must stop the program rather than show
// a wrong number, and the two buttons.
class WaterPanel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(PrefWaterState *waterState READ waterState CONSTANT)
    // size() for QML, whose tools in Qt 6.4 do not know QSize.
    Q_PROPERTY(int panelWidth READ panelWidth CONSTANT)
    Q_PROPERTY(int panelHeight READ panelHeight CONSTANT)
    Q_PROPERTY(QVariantList amounts READ amounts NOTIFY amountsChanged)
public:
    static WaterPanel *create(QQmlEngine *qmlEngine, QJSEngine *jsEngine);
    ~WaterPanel() override;

    // The panel's size; its window is made this size.
    static QSize size() { return {280, 330}; }
    static int panelWidth() { return size().width(); }
    static int panelHeight() { return size().height(); }
    // After "Done", the new tally stays in view this long before the panel goes.
    static constexpr int doneDelayMilliseconds = 500;

    PrefWaterState *waterState() const;
    // The amounts offered, ml, as numbers QML can lay out.
    QVariantList amounts() const;

    // finishedPrecent as a whole per cent, truncated toward zero. A fraction
    // that is not a finite number (a target of 0) stops the program: there is
    // no right number to show, and a wrong one would go unnoticed.
    Q_INVOKABLE static qint64 wholePercent(float finishedPrecent);
    // Seconds left until the next drink: the interval counted from the moment
    // the reminder was armed (lastClickTimestamp), the same deadline as the
    // armed job. Negative once it is past.
    Q_INVOKABLE static qint64 secondsToNextDrink();
    // The countdown's text, as the work countdown writes it.
    Q_INVOKABLE static QString timeString(qint64 seconds);
    // Logged when the panel opens outside working hours.
    Q_INVOKABLE static void noteNotInWorkTime();

    // "Skip": the panel goes and the next reminder is counted from now.
    Q_INVOKABLE void skipAction();
    // "Done": today's tally grows at once; the panel goes, and the next
    // reminder is armed, half a second later.
    Q_INVOKABLE void doneAction();
    // The close button: only the panel goes; nothing is armed.
    Q_INVOKABLE void closeAction();

Q_SIGNALS:
    void amountsChanged();

private:
    WaterPanel();

    DelayedTask *m_doneTask = nullptr;
};
