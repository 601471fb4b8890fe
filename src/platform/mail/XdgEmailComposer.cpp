#include "XdgEmailComposer.h"

#include "app/Log.h"

#include <QFile>
#include <QProcess>

QStringList XdgEmailComposer::arguments(const QString &recipient, const QString &subject,
                                        const QString &body, const QString &attachment)
{
    QStringList args{QStringLiteral("--utf8"), QStringLiteral("--subject"), subject,
                     QStringLiteral("--body"), body};
    if (!attachment.isEmpty() && QFile::exists(attachment))
        args << QStringLiteral("--attach") << attachment;
    args << recipient;
    return args;
}

void XdgEmailComposer::compose(const QString &recipient, const QString &subject,
                               const QString &body, const QString &attachment)
{
    if (!QProcess::startDetached(m_program, arguments(recipient, subject, body, attachment)))
        LOG_WARNING(QStringLiteral("could not start %1 for the feedback mail").arg(m_program));
}
