#include "history/HistoryWriter.h"

#include "history/HistoryStore.h"

#include <QCoreApplication>
#include <QDateTime>

HistoryWriter::HistoryWriter(const QString &path, qint64 keepDays,
                             const HistoryModule::Report &report)
    : m_context(new QObject), m_report(report), m_reportContext(new QObject)
{
    m_thread.setObjectName(QStringLiteral("narv-history"));
    m_context->moveToThread(&m_thread);
    m_thread.start(QThread::LowPriority);
    QMetaObject::invokeMethod(m_context, [this, path, keepDays] {
        m_store = new HistoryStore(QStringLiteral("narv-history"));
        QString problem;
        m_broken = !m_store->open(path, keepDays, QDateTime::currentSecsSinceEpoch(), &problem);
        if (!problem.isEmpty())
            say(problem);
    });
}

HistoryWriter::~HistoryWriter()
{
    QMetaObject::invokeMethod(m_context, [this] {
        delete m_store;
        m_store = nullptr;
        delete m_context;
        QThread::currentThread()->quit();
    });
    m_thread.wait();
    delete m_reportContext;
}

void HistoryWriter::record(const HistoryEvent &event)
{
    QMetaObject::invokeMethod(m_context, [this, event] {
        if (m_broken)
            return;
        QString problem;
        if (!m_store->add(event, &problem)) {
            m_broken = true;
            say(problem + QStringLiteral("; recording stops until Narv starts again"));
        }
    });
}

void HistoryWriter::say(const QString &problem)
{
    QMetaObject::invokeMethod(m_reportContext, [report = m_report, problem] { report(problem); });
}
