#pragma once

// Shared by the test programs: a scratch home so no test touches the real
// settings or logs, and a way to run a piece of a test in a child process
// (for fatal stops, and for reading files the way a fresh process does).

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace TestSupport {

// Points HOME and the XDG folders at a temporary folder. Must run before the
// first use of the settings store or the logger.
class ScratchHome {
public:
    ScratchHome()
    {
        if (!qEnvironmentVariableIsSet("NARV_TEST_HOME"))
            m_dir.emplace();
        m_path = m_dir ? m_dir->path() : qEnvironmentVariable("NARV_TEST_HOME");
        QDir().mkpath(m_path + QStringLiteral("/config"));
        QDir().mkpath(m_path + QStringLiteral("/cache"));
        qputenv("HOME", m_path.toUtf8());
        qputenv("XDG_CONFIG_HOME", (m_path + QStringLiteral("/config")).toUtf8());
        qputenv("XDG_CACHE_HOME", (m_path + QStringLiteral("/cache")).toUtf8());
    }
    QString path() const { return m_path; }

private:
    std::optional<QTemporaryDir> m_dir;
    QString m_path;
};

// The whole file; empty when it cannot be read.
inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaces the file with `text`, making its folder first.
inline bool writeFile(const QString &path, const QByteArray &text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size();
}

// Child modes: a test program calls runChildMode() first thing in main(); when
// started with "--child NAME" it runs that function and exits with its result.
using ChildModes = std::map<std::string, std::function<int()>>;

inline int runChildMode(int argc, char **argv, const ChildModes &modes)
{
    if (argc < 3 || std::string(argv[1]) != "--child")
        return -1;
    const auto it = modes.find(argv[2]);
    return it == modes.end() ? 99 : it->second();
}

struct ChildResult {
    QProcess::ExitStatus status = QProcess::NormalExit;
    int exitCode = 0;
    QByteArray out;
    QByteArray err;
};

// Runs this test program in child mode `name` with the same scratch home.
inline ChildResult runChild(const QString &name, const QString &home,
                            const QStringList &extraArgs = {})
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("NARV_TEST_HOME"), home);
    p.setProcessEnvironment(env);
    p.start(QCoreApplication::applicationFilePath(),
            QStringList{QStringLiteral("--child"), name} + extraArgs);
    p.waitForFinished(30000);
    return {p.exitStatus(), p.exitCode(), p.readAllStandardOutput(), p.readAllStandardError()};
}

} // namespace TestSupport
