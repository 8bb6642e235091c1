#pragma once

#include <QList>
#include <QPair>
#include <QString>

namespace korvane {

// Makes moves the person may not make alone (in a format's system folders they cannot write)
// with administrator rights, asked once for the whole list. The window hands one to its
// managers (the privileged helper through pkexec); KorvaneCMD has none, since it holds the
// folders' lock for its whole run and a helper would wait for it in vain.
class RightsMover {
public:
    enum class State {
        Done,       // every move made
        Failed,     // the moves ran; some failed (see each result)
        NotGranted, // no rights: the person cancelled, or nothing on this system can ask
        Refused,    // the rights were there but nothing was moved (refused, lock busy, broken)
    };
    struct Result {
        bool ok = false;
        QString error; // when not ok: the path and why
        int code = 0;  // errno; EEXIST: another item lies at the target
    };
    struct Outcome {
        State state = State::Refused;
        QList<Result> results; // one per move, in the order asked
        QString said;          // what a person is told of the state; empty for Done
    };

    virtual ~RightsMover() = default;
    // Each pair is (from, to), absolute.
    virtual Outcome move(const QList<QPair<QString, QString>> &moves) = 0;
};

} // namespace korvane
