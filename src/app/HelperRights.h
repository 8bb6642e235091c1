#pragma once

#include "library/RightsMover.h"
#include "os/Roots.h"

namespace korvane {

// The window's rights mover: korvane-helper through pkexec, one run per apply.
class HelperRights : public RightsMover {
public:
    explicit HelperRights(Roots roots) : m_roots(std::move(roots)) {}
    Outcome move(const QList<QPair<QString, QString>> &moves) override;

private:
    Roots m_roots;
};

} // namespace korvane
