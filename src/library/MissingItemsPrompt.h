#pragma once

#include "core/UserInterface.h"

#include <QString>

namespace korvane {

// After a set was opened, lists the plug-ins it names that are no longer installed and asks
// whether to leave them in the set or take them out.
class MissingItemsPrompt {
public:
    explicit MissingItemsPrompt(UserInterface &ui) : m_ui(ui) {}
    void clear() { m_text.clear(); }
    void add(const QString &name);
    QString text() const { return m_text; }
    MissingItemsAnswer ask();

private:
    UserInterface &m_ui;
    QString m_text;
};

} // namespace korvane
