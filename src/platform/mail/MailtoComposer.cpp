#include "MailtoComposer.h"

#include "app/Log.h"

#include <QProcess>
#include <QUrlQuery>

QUrl MailtoComposer::url(const QString &recipient, const QString &subject, const QString &body)
{
    QUrl url;
    url.setScheme(QStringLiteral("mailto"));
    url.setPath(recipient);
    // Encoded by hand: QUrlQuery leaves "&", "=" and "+" in values alone, and
    // mail programs read "+" as a plus, not a space.
    const auto encode = [](const QString &text) {
        return QString::fromLatin1(QUrl::toPercentEncoding(text));
    };
    url.setQuery(QStringLiteral("subject=") + encode(subject) + QStringLiteral("&body=") +
                     encode(body),
                 QUrl::StrictMode);
    return url;
}

void MailtoComposer::compose(const QString &recipient, const QString &subject, const QString &body,
                             const QString &attachment)
{
    const QString link = url(recipient, subject, body).toString(QUrl::FullyEncoded);
    if (!QProcess::startDetached(m_xdgOpen, {link})) {
        LOG_WARNING(QStringLiteral("nothing on this desktop opens mailto: links; feedback goes "
                                   "to ") +
                    recipient);
        return;
    }
    if (!attachment.isEmpty())
        LOG_INFO(QStringLiteral("the feedback mail cannot carry the log; it is at ") + attachment);
}
