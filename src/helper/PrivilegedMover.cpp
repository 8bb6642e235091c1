#include "helper/PrivilegedMover.h"

#include "core/Texts.h"
#include "os/LibraryLock.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace korvane {

namespace {

using helper::AnswerLine;
using helper::Ending;

// What pkexec answers when it runs nothing.
constexpr int kPkexecNotAuthorized = 126;
constexpr int kPkexecFailed = 127;
// pkexec's and the helper's messages for a person: a few lines at most.
constexpr qsizetype kMaxErrorBytes = 16 * 1024;
constexpr qsizetype kMaxShownChars = 500;

// Outside text as one plain line of reasonable length.
QString shown(const QByteArray &bytes)
{
    QString text = QString::fromUtf8(bytes).simplified();
    if (text.size() > kMaxShownChars)
        text = text.left(kMaxShownChars) + QChar(0x2026);
    return text;
}

// Appends what arrived to buffer until it holds limit bytes; the rest is dropped and counted.
void take(QByteArray *buffer, const QByteArray &arrived, qsizetype limit, bool *overflow)
{
    const qsizetype room = limit - buffer->size();
    if (arrived.size() > room)
        *overflow = true;
    buffer->append(arrived.left(std::max<qsizetype>(room, 0)));
}

// Reads the helper's answer into the outcome. Anything the helper does not write (a line too
// long, a move not asked, a second ending, an exit that contradicts the ending) makes it Broken,
// keeping what was read.
void readAnswer(const QByteArray &answer, int exitCode, PrivilegedMover::Outcome *outcome)
{
    const auto broken = [outcome](const QString &why) {
        outcome->state = PrivilegedMover::State::Broken;
        outcome->detail = why;
    };
    const QList<QByteArray> lines = answer.split('\n');
    qsizetype next = 0;
    std::optional<Ending> ending;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines.at(i).isEmpty() && i == lines.size() - 1)
            break; // after the last line break
        const AnswerLine line = helper::decodeAnswerLine(lines.at(i));
        if (ending || (!line.result && !line.ending))
            return broken(
                QStringLiteral("line %1 of the helper's answer is not one it writes").arg(i + 1));
        if (line.ending) {
            ending = line.ending;
            continue;
        }
        if (next >= outcome->results.size() || line.result->move != outcome->results.at(next).move)
            return broken(QStringLiteral("the helper answered for a move that was not asked"));
        PrivilegedMover::Result &result = outcome->results[next++];
        result.answered = true;
        result.ok = line.result->ok;
        result.error = line.result->error;
        result.code = line.result->code;
    }
    if (!ending)
        return broken(
            QStringLiteral("the helper stopped before it finished (exit status %1)").arg(exitCode));
    switch (ending->kind) {
    case Ending::Done: {
        const bool allAnswered = next == outcome->results.size();
        const bool allMoved = ending->failed == 0;
        if (!allAnswered || exitCode != (allMoved ? helper::ExitAllMoved : helper::ExitSomeFailed))
            return broken(
                QStringLiteral("the helper's answer and exit status %1 disagree").arg(exitCode));
        outcome->state = allMoved ? PrivilegedMover::State::Done : PrivilegedMover::State::Failed;
        return;
    }
    case Ending::Refused:
        if (next != 0 || exitCode != helper::ExitRefused)
            return broken(QStringLiteral("the helper refused after it moved"));
        outcome->state = PrivilegedMover::State::Refused;
        outcome->detail = ending->error;
        outcome->path = ending->path;
        return;
    case Ending::LockNotTaken:
        if (next != 0 || exitCode != helper::ExitLockNotTaken)
            return broken(QStringLiteral("the helper lost the lock after it moved"));
        outcome->state = PrivilegedMover::State::LockBusy;
        outcome->detail = ending->error;
        outcome->holder = ending->holder;
        return;
    }
}

} // namespace

PrivilegedMover::PrivilegedMover(Roots roots, QString pkexec, QString helper)
    : m_roots(std::move(roots)), m_pkexec(std::move(pkexec)), m_helper(std::move(helper))
{
}

QString PrivilegedMover::defaultPkexec()
{
    return QStandardPaths::findExecutable(QStringLiteral("pkexec"));
}

QString PrivilegedMover::defaultHelper()
{
    // Beside the running program, or in a build tree beside the window's folder (src/gui).
    if (QCoreApplication::instance()) {
        const QString here = QCoreApplication::applicationDirPath();
        for (const QString &candidate :
             {here + QStringLiteral("/korvane-helper"),
              QDir::cleanPath(here + QStringLiteral("/../korvane-helper"))}) {
            if (QFileInfo(candidate).isExecutable())
                return candidate;
        }
    }
    // The path the shipped polkit action names, so that polkit shows its own message.
    return QStringLiteral(KORVANE_HELPER_INSTALLED);
}

PrivilegedMover::Outcome PrivilegedMover::run(const QList<helper::Move> &moves) const
{
    Outcome outcome;
    for (const helper::Move &move : moves) {
        Result result;
        result.move = move;
        outcome.results.append(result);
    }
    if (moves.isEmpty()) {
        outcome.state = State::Done;
        return outcome;
    }
    if (m_pkexec.isEmpty() || !QFileInfo(m_pkexec).isExecutable()) {
        outcome.state = State::NoPolkit;
        return outcome;
    }
    const QFileInfo helperFile(m_helper);
    if (!helperFile.isAbsolute() || !helperFile.isFile() || !helperFile.isExecutable()) {
        outcome.state = State::NoHelper;
        outcome.path = m_helper;
        return outcome;
    }

    QProcess process;
    process.setProgram(m_pkexec);
    process.setArguments({m_helper, QStringLiteral("--root"), m_roots.systemRoot,
                          QStringLiteral("--home"), m_roots.home, QStringLiteral("--wait-ms"),
                          QString::number(m_waitMs < 0 ? LibraryLock::defaultWaitMs() : m_waitMs)});
    process.start();
    if (!process.waitForStarted(-1)) {
        outcome.state = State::NoPolkit;
        outcome.detail = process.errorString();
        return outcome;
    }
    process.write(helper::encodeRequest(moves));
    process.closeWriteChannel();

    // pkexec passes the request on only once the person has answered, which may take a while:
    // no time limit, but never more than the limits of what is read.
    QByteArray answer, errors;
    bool answerOverflow = false, errorsOverflow = false;
    const auto drain = [&] {
        take(&answer, process.readAllStandardOutput(), helper::MaxAnswerBytes, &answerOverflow);
        take(&errors, process.readAllStandardError(), kMaxErrorBytes, &errorsOverflow);
    };
    while (process.state() != QProcess::NotRunning) {
        process.waitForReadyRead(100);
        drain();
    }
    drain();

    const int exitCode = process.exitCode();
    if (process.exitStatus() != QProcess::NormalExit) {
        outcome.detail = QStringLiteral("the helper stopped: %1").arg(shown(errors));
        return outcome;
    }
    if (exitCode == kPkexecNotAuthorized) {
        outcome.state = State::Cancelled;
        return outcome;
    }
    if (exitCode == kPkexecFailed) {
        outcome.state = State::NoAgent;
        outcome.detail = shown(errors);
        return outcome;
    }
    if (answerOverflow) {
        outcome.detail = QStringLiteral("the helper's answer is longer than %1 bytes")
                             .arg(helper::MaxAnswerBytes);
        return outcome;
    }
    readAnswer(answer, exitCode, &outcome);
    return outcome;
}

QString PrivilegedMover::describe(const Outcome &outcome)
{
    int failed = 0;
    for (const Result &result : outcome.results)
        failed += result.ok ? 0 : 1;
    switch (outcome.state) {
    case State::Done:
        return {};
    case State::Failed:
        return korvane::tr("%1 of %2 plug-ins in the system folders could not be moved.")
            .arg(failed)
            .arg(outcome.results.size());
    case State::Cancelled:
        return korvane::tr("Administrator rights are needed to change plug-ins in the system "
                           "folders. They were not given; nothing was moved.");
    case State::NoAgent:
        return korvane::tr("Administrator rights are needed to change plug-ins in the system "
                           "folders, but nobody could be asked for them: %1")
            .arg(outcome.detail);
    case State::NoPolkit:
        return korvane::tr("Administrator rights are needed to change plug-ins in the system "
                           "folders, and this system cannot ask for them: pkexec (polkit) is not "
                           "installed.");
    case State::NoHelper:
        return korvane::tr("Administrator rights are needed to change plug-ins in the system "
                           "folders, but Korvane's helper program is missing: %1")
            .arg(outcome.path);
    case State::Refused:
        return korvane::tr("Korvane's helper refused to move plug-ins in the system folders, and "
                           "nothing was moved: %1")
            .arg(outcome.path.isEmpty() ? outcome.detail
                                        : outcome.path + QStringLiteral(": ") + outcome.detail);
    case State::LockBusy:
        return outcome.holder.isEmpty()
                   ? korvane::tr("The plug-in library could not be locked: %1.").arg(outcome.detail)
                   : korvane::tr("%1 is moving plug-ins. Try again when it has finished.")
                         .arg(outcome.holder);
    case State::Broken:
        return korvane::tr("Korvane's helper gave no answer that could be read: %1. Rescan to see "
                           "where the plug-ins are.")
            .arg(outcome.detail);
    }
    return {};
}

} // namespace korvane
