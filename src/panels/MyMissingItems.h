#pragma once

#include <QString>

namespace korvane {

// After a set was opened, lists the plug-ins it names that are no longer installed.
class UserInterface;

class MyMissingItems {
public:
    explicit MyMissingItems(UserInterface &ui) : m_ui(ui) {}
    static MyMissingItems *getMI();

    void removeMissingItems() { m_text.clear(); }
    void addMissingItem(const QString &name);
    QString text() const { return m_text; }
    // 1 ignore, 2 remove.
    int showMissingItems();

private:
    UserInterface &m_ui;
    QString m_text;
};

} // namespace korvane
