#pragma once

#include <QMetaProperty>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>

// A read/write handle on one 64-bit integer property of a settings object,
// for the number field and the stepper. The arithmetic stays in C++: a QML
// number is a double and would round a large qint64, and overflow has to stop
// the program rather than wrap.
//
//   IntegerBinding { object: PrefEnvironment.waterState; name: "target" }
class IntegerBinding : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QObject *object READ object WRITE setObject NOTIFY objectChanged)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    // The value as QML sees it (a double) and as text, exact.
    Q_PROPERTY(double value READ valueAsDouble NOTIFY valueChanged)
    Q_PROPERTY(QString text READ text NOTIFY valueChanged)
public:
    using QObject::QObject;

    QObject *object() const { return m_object; }
    void setObject(QObject *object);
    QString name() const { return m_name; }
    void setName(const QString &name);

    // 0 until the property is found.
    qint64 value() const;
    double valueAsDouble() const { return double(value()); }
    QString text() const { return QString::number(value()); }

    // Writes value + delta through the property's setter. Overflow is fatal.
    Q_INVOKABLE void add(qint64 delta);
    // Writes the whole number the text spells (in the system locale, with or
    // without group separators, or plainly) unless it is the value already;
    // anything else changes nothing, is logged, and returns false.
    Q_INVOKABLE bool commit(const QString &text);

    // The whole number a text spells, as commit() reads it.
    static std::optional<qint64> parse(const QString &text);

Q_SIGNALS:
    void objectChanged();
    void nameChanged();
    void valueChanged();

private:
    void bind();
    void write(qint64 value);

    QPointer<QObject> m_object;
    QString m_name;
    QMetaProperty m_property;
    QMetaObject::Connection m_notify;
};
