#include "app/HelperRights.h"

#include "helper/PrivilegedMover.h"

namespace korvane {

RightsMover::Outcome HelperRights::move(const QList<QPair<QString, QString>> &moves)
{
    QList<helper::Move> asked;
    for (const auto &[from, to] : moves)
        asked << helper::Move{from, to};
    PrivilegedMover mover(m_roots);
    mover.setLockWaitMs(m_lockWaitMs);
    const PrivilegedMover::Outcome run = mover.run(asked);
    Outcome outcome;
    outcome.said = PrivilegedMover::describe(run);
    for (const PrivilegedMover::Result &result : run.results)
        outcome.results << Result{result.ok, result.error, result.code};
    using MoverState = PrivilegedMover::State;
    switch (run.state) {
    case MoverState::Done:
        outcome.state = RightsMover::State::Done;
        break;
    case MoverState::Failed:
        outcome.state = RightsMover::State::Failed;
        break;
    case MoverState::Cancelled:
    case MoverState::NoAgent:
    case MoverState::NoPolkit:
    case MoverState::NoHelper:
        outcome.state = RightsMover::State::NotGranted;
        break;
    case MoverState::Refused:
    case MoverState::LockBusy:
    case MoverState::Broken:
        outcome.state = RightsMover::State::Refused;
        break;
    }
    return outcome;
}

} // namespace korvane
