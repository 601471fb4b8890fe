#include "ChildFeedFetcher.h"

#include "UpdateCheck.h"

#include <QCoreApplication>

ChildFeedFetcher::~ChildFeedFetcher()
{
    m_process.disconnect();
    m_process.kill();
    m_process.waitForFinished(1000);
}

void ChildFeedFetcher::fetch(const QUrl &url, Done done)
{
    m_process.disconnect();
    m_process.kill();
    m_process.waitForFinished(1000);
    QObject::connect(
        &m_process, &QProcess::finished, &m_process,
        [this, done](int code, QProcess::ExitStatus status) {
            const QByteArray body = m_process.readAllStandardOutput();
            const QString error = QString::fromUtf8(m_process.readAllStandardError()).trimmed();
            if (status == QProcess::NormalExit && code == 0)
                done(body, QString());
            else
                done({}, error.isEmpty() ? QStringLiteral("the fetch ended early") : error);
        });
    QObject::connect(&m_process, &QProcess::errorOccurred, &m_process,
                     [this, done](QProcess::ProcessError error) {
                         if (error == QProcess::FailedToStart)
                             done({}, QStringLiteral("cannot start the fetch: ") +
                                          m_process.errorString());
                     });
    m_process.start(QCoreApplication::applicationFilePath(),
                    {QString::fromLatin1(UpdateCheck::fetchOption), url.toString()});
}
