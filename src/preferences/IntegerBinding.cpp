#include "preferences/IntegerBinding.h"

#include "app/Log.h"

#include <QLocale>
#include <QMetaMethod>

void IntegerBinding::setObject(QObject *object)
{
    if (m_object == object)
        return;
    m_object = object;
    bind();
    Q_EMIT objectChanged();
}

void IntegerBinding::setName(const QString &name)
{
    if (m_name == name)
        return;
    m_name = name;
    bind();
    Q_EMIT nameChanged();
}

void IntegerBinding::bind()
{
    QObject::disconnect(m_notify);
    m_property = QMetaProperty();
    if (m_object && !m_name.isEmpty()) {
        const QMetaObject *meta = m_object->metaObject();
        const int index = meta->indexOfProperty(m_name.toLatin1().constData());
        if (index < 0) {
            LOG_ERROR(QStringLiteral("%1 has no property %2")
                          .arg(QString::fromLatin1(meta->className()), m_name));
        } else {
            m_property = meta->property(index);
            const QMetaMethod notify = m_property.notifySignal();
            const int slot = metaObject()->indexOfMethod("valueChanged()");
            if (notify.isValid())
                m_notify = connect(m_object, notify, this, metaObject()->method(slot));
        }
    }
    Q_EMIT valueChanged();
}

qint64 IntegerBinding::value() const
{
    if (!m_object || !m_property.isValid())
        return 0;
    return m_property.read(m_object).toLongLong();
}

void IntegerBinding::write(qint64 value)
{
    if (!m_object || !m_property.isValid())
        return;
    m_property.write(m_object, QVariant::fromValue(value));
}

void IntegerBinding::add(qint64 delta)
{
    qint64 sum = 0;
    if (__builtin_add_overflow(value(), delta, &sum))
        qFatal("Fatal error: Arithmetic overflow stepping %s", qPrintable(m_name));
    write(sum);
}

std::optional<qint64> IntegerBinding::parse(const QString &text)
{
    const QString trimmed = text.trimmed();
    bool ok = false;
    qint64 number = QLocale::system().toLongLong(trimmed, &ok);
    if (!ok)
        number = QLocale::c().toLongLong(trimmed, &ok);
    if (!ok)
        return std::nullopt;
    return number;
}

bool IntegerBinding::commit(const QString &text)
{
    const std::optional<qint64> number = parse(text);
    if (!number) {
        LOG_INFO(QStringLiteral("%1: \"%2\" is not a whole number; keeping %3")
                     .arg(m_name, text, this->text()));
        return false;
    }
    // Leaving the field without an edit must not count as setting the value:
    // a stored work time restarts the work period.
    if (*number != value())
        write(*number);
    return true;
}
