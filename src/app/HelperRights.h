#pragma once

#include "library/RightsMover.h"
#include "os/Roots.h"

namespace korvane {

// The window's rights mover: korvane-helper through pkexec, one run per apply.
class HelperRights : public RightsMover {
public:
    // lockWaitMs: the run's wait for another mover's lock, handed on to the helper.
    explicit HelperRights(Roots roots, int lockWaitMs = -1)
        : m_roots(std::move(roots)), m_lockWaitMs(lockWaitMs)
    {
    }
    Outcome move(const QList<QPair<QString, QString>> &moves) override;

private:
    Roots m_roots;
    int m_lockWaitMs;
};

} // namespace korvane
