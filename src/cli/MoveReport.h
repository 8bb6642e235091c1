#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

class QTextStream;

namespace korvane {

// What a mover did, or with --check would do. As text each move is a line on standard output
// ("disabled NAME") and each failure, warning and error a line on standard error, said as they
// come; with --json the same goes into one object printed at the end, and standard error still
// gets the failures, warnings and errors as lines.
class MoveReport {
public:
    enum Outcome { Done, Would, Failed, Refused, Stopped };
    struct Move {
        QString format; // "AU"
        QString name;
        QString from, to;
        QString done;   // as a real run says it: "disabled", "enabled and moved to user"
        QString action; // as wanted: "disable", "enable and move to user"
        Outcome outcome = Done;
        QString reason; // why it failed
        QString at;     // the path that failed, when it is neither from nor to
    };

    MoveReport(bool json, bool check, QTextStream &out, QTextStream &err);

    // A line for standard error, such as "warning: AU set ...".
    void warning(const QString &line);
    void error(const QString &line);
    void add(const Move &move);
    // The plug-ins of a format that are on, before and after the run.
    void setBefore(const QString &format, const QStringList &names);
    void setAfter(const QString &format, const QStringList &names);

    // Prints the object (--json) and gives the exit status. status is the run's own: anything
    // but ExitDone stands; with ExitDone a failed move makes it ExitMoveFailed, and with --check a
    // move that would be made ExitWouldMove. notices: what the run said on the way, as warnings.
    int finish(int status, const QStringList &notices);

private:
    bool m_json;
    bool m_check;
    QTextStream &m_out;
    QTextStream &m_err;
    QJsonArray m_moves;
    QStringList m_warnings;
    QStringList m_errors;
    QJsonObject m_before;
    QJsonObject m_after;
    bool m_changed = false;
    bool m_failed = false;
};

} // namespace korvane
