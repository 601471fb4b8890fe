#pragma once

#include <QObject>
#include <QtQml/qqml.h>

// The settings window's History tab: the two settings, and the window.
class HistorySettings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool keepHistory READ keepHistory WRITE setKeepHistory NOTIFY keepHistoryChanged)
    Q_PROPERTY(qint64 keepDays READ keepDays WRITE setKeepDays NOTIFY keepDaysChanged)
    Q_PROPERTY(int maxKeepDays READ maxKeepDays CONSTANT)
public:
    explicit HistorySettings(QObject *parent = nullptr);

    bool keepHistory() const;
    void setKeepHistory(bool value);
    qint64 keepDays() const;
    void setKeepDays(qint64 value);
    static int maxKeepDays();

    Q_INVOKABLE static void openHistory();

Q_SIGNALS:
    void keepHistoryChanged();
    void keepDaysChanged();
};
