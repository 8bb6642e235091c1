#pragma once

#include "helper/HelperProtocol.h"
#include "os/Roots.h"

#include <QList>
#include <QString>

namespace korvane {

// Moves plug-ins inside the system-wide folders with administrator rights: one run of
// korvane-helper through pkexec per call, so polkit asks once for all the system moves of an
// apply. The helper checks every path itself and takes the library lock as root; the caller must
// not hold the lock of the system folders meanwhile (the helper would wait for it in vain).
class PrivilegedMover {
public:
    enum class State {
        Done,      // every move made
        Failed,    // the helper ran; some moves failed (see each result)
        Cancelled, // the person cancelled, or polkit refused the right (pkexec's 126)
        NoAgent,   // nobody could be asked: no authentication agent (pkexec's 127)
        NoPolkit,  // no pkexec at all: administrator rights cannot be asked for
        NoHelper,  // the helper program is not where it should be
        Refused,   // the helper refused the request; nothing was touched
        LockBusy,  // another mover held the folders; nothing was touched
        Broken,    // no answer that could be read (a crash, a cut-off answer)
    };

    struct Result {
        helper::Move move;
        bool ok = false;
        bool answered = false; // the helper said what became of this move
        QString error;         // when answered and not ok: the path and why
        int code = 0;          // errno; EEXIST: another item lies at the target
    };

    struct Outcome {
        State state = State::Broken;
        QList<Result> results; // one per move, in the order asked
        QString detail;        // Refused, LockBusy, NoAgent, Broken: why, as given
        QString path;          // Refused: the path refused, when one was
        QString holder;        // LockBusy: who holds the lock, when known
    };

    // pkexec and the helper are parameters so that a test can run the helper in another way.
    explicit PrivilegedMover(Roots roots, QString pkexec = defaultPkexec(),
                             QString helper = defaultHelper());

    // How long the helper waits for another mover; negative: the library lock's own default.
    void setLockWaitMs(int waitMs) { m_waitMs = waitMs; }

    // Runs the moves; with none, asks nothing and is Done. Waits for the person to answer polkit.
    Outcome run(const QList<helper::Move> &moves) const;

    // pkexec on the search path; empty when there is none.
    static QString defaultPkexec();
    // The helper beside the running program or beside its folder (a build tree), else the
    // installed one.
    static QString defaultHelper();
    // What a person is told of an outcome, in one or two sentences; empty for Done.
    static QString describe(const Outcome &outcome);

private:
    Roots m_roots;
    QString m_pkexec;
    QString m_helper;
    int m_waitMs = -1;
};

} // namespace korvane
