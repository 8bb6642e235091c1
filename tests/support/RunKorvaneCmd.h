#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace korvane {

// What a run of a program said and how it ended; -1 when it crashed or was killed.
struct ToolRun {
    int exitCode = -1;
    QString out, err;
};

// Changes to the test's own environment for the program: a value sets a variable, none removes it.
using EnvironmentChanges = QList<QPair<QString, std::optional<QString>>>;

// Starts program with arguments as a list (no shell) and input on its standard input, closed
// after it.
inline std::unique_ptr<QProcess> startKorvaneCmd(const QString &program,
                                                 const QStringList &arguments,
                                                 const EnvironmentChanges &changes,
                                                 const QByteArray &input = {})
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : changes) {
        if (value)
            environment.insert(name, *value);
        else
            environment.remove(name);
    }
    process->setProcessEnvironment(environment);
    process->start(program, arguments);
    EXPECT_TRUE(process->waitForStarted()) << program.toStdString();
    process->write(input);
    process->closeWriteChannel();
    return process;
}

// Waits for a started program; one not over in timeoutMs is killed and counts as failed.
inline ToolRun finishKorvaneCmd(QProcess &process, int timeoutMs = 60000)
{
    if (!process.waitForFinished(timeoutMs)) {
        ADD_FAILURE() << "killed: " << process.arguments().join(' ').toStdString();
        process.kill();
        process.waitForFinished();
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

// KorvaneCMD (or a program it starts) run to its end.
inline ToolRun runKorvaneCmd(const QString &program, const QStringList &arguments,
                             const EnvironmentChanges &changes, const QByteArray &input = {},
                             int timeoutMs = 60000)
{
    return finishKorvaneCmd(*startKorvaneCmd(program, arguments, changes, input), timeoutMs);
}

} // namespace korvane
