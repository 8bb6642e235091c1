#include "cli/MoveReport.h"

#include "cli/CliRunner.h"
#include "cli/ShownText.h"

#include <QJsonDocument>
#include <QTextStream>

namespace korvane {

namespace {

QString outcomeWord(MoveReport::Outcome outcome)
{
    switch (outcome) {
    case MoveReport::Done:
        return QStringLiteral("done");
    case MoveReport::Would:
        return QStringLiteral("would");
    case MoveReport::Failed:
        return QStringLiteral("failed");
    case MoveReport::Refused:
        return QStringLiteral("refused");
    case MoveReport::Stopped:
        return QStringLiteral("stopped");
    }
    return {};
}

QJsonArray shownNames(QStringList names)
{
    for (QString &name : names)
        name = displayName(name);
    names.sort();
    return QJsonArray::fromStringList(names);
}

} // namespace

MoveReport::MoveReport(bool json, bool check, QTextStream &out, QTextStream &err)
    : m_json(json), m_check(check), m_out(out), m_err(err)
{
}

void MoveReport::warning(const QString &line)
{
    m_err << line << '\n';
    m_err.flush();
    m_warnings << line;
}

void MoveReport::error(const QString &line)
{
    m_err << line << '\n';
    m_err.flush();
    m_errors << line;
}

void MoveReport::add(const Move &move)
{
    QJsonObject object{{QStringLiteral("name"), displayName(move.name)},
                       {QStringLiteral("format"), move.format},
                       {QStringLiteral("from"), displayName(move.from)},
                       {QStringLiteral("to"), displayName(move.to)},
                       {QStringLiteral("action"), move.action},
                       {QStringLiteral("outcome"), outcomeWord(move.outcome)}};
    if (move.outcome == Done || move.outcome == Would) {
        m_changed = true;
        if (!m_json) {
            // A check says what a real run would say: the two reports compare line by line.
            m_out << move.done << ' ' << shownLine(move.name) << '\n';
            m_out.flush();
        }
    } else {
        m_failed = true;
        QString line = QStringLiteral("error: could not %1 \"%2\": \"%3\" -> \"%4\": %5")
                           .arg(move.action, shownLine(move.name), shownLine(move.from),
                                shownLine(move.to), move.reason);
        QString reason = move.reason;
        if (!move.at.isEmpty()) {
            line += QStringLiteral(" (at \"%1\")").arg(shownLine(move.at));
            reason += QStringLiteral(" (at \"%1\")").arg(displayName(move.at));
        }
        object.insert(QStringLiteral("error"), reason);
        error(line);
    }
    m_moves.append(object);
}

void MoveReport::setBefore(const QString &format, const QStringList &names)
{
    m_before.insert(format, shownNames(names));
}

void MoveReport::setAfter(const QString &format, const QStringList &names)
{
    m_after.insert(format, shownNames(names));
}

int MoveReport::finish(int status, const QStringList &notices)
{
    const bool reached = status == ExitDone;
    if (reached && m_failed)
        status = ExitMoveFailed;
    else if (reached && m_check && m_changed)
        status = ExitWouldMove;
    for (const QString &notice : notices)
        m_warnings << QStringLiteral("KorvaneCMD: ") + shownLine(notice);

    if (!m_json) {
        if (m_check && reached) {
            m_err << "KorvaneCMD: nothing moved (--check)\n";
            m_err.flush();
        }
        return status;
    }
    const QJsonObject report{{QStringLiteral("changed"), m_changed},
                             {QStringLiteral("check"), m_check},
                             {QStringLiteral("moves"), m_moves},
                             {QStringLiteral("warnings"), QJsonArray::fromStringList(m_warnings)},
                             {QStringLiteral("errors"), QJsonArray::fromStringList(m_errors)},
                             {QStringLiteral("before"), m_before},
                             {QStringLiteral("after"), m_after}};
    m_out << QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Indented));
    m_out.flush();
    return status;
}

} // namespace korvane
