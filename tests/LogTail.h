#pragma once

// The day's log file as the tests read it: how often a text occurs in it,
// the messages written since the last look, and what a child that stopped
// the program logged.

#include "TestSupport.h"

#include "app/Log.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

class LogTail {
public:
    static QByteArray text() { return TestSupport::readFile(Logger::logfilePath()); }

    static int count(const QByteArray &text) { return int(LogTail::text().count(text)); }

    // The messages (what follows " : ") written since the last call.
    QStringList newMessages()
    {
        QFile file(Logger::logfilePath());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        file.seek(m_offset);
        const QByteArray bytes = file.readAll();
        m_offset += bytes.size();
        QStringList messages;
        for (const QString &line : QString::fromUtf8(bytes).split(u'\n', Qt::SkipEmptyParts))
            messages << line.section(QStringLiteral(" : "), 1);
        return messages;
    }

    struct FatalChild {
        bool crashed = false;
        QByteArray log;
    };

    // Runs child mode `mode` of this test program in a scratch home of its
    // own, for a stop that ends the process; `home` is the test's own.
    static FatalChild runFatalChild(const QString &mode, const QString &home,
                                    const QStringList &args = {})
    {
        QTemporaryDir childHome;
        const auto child = TestSupport::runChild(mode, childHome.path(), args);
        return {child.status == QProcess::CrashExit,
                TestSupport::readFile(Logger::logfilePath().replace(home, childHome.path()))};
    }

private:
    qint64 m_offset = 0;
};
