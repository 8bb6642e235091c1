#pragma once

#include <QString>

namespace korvane {

// The about panel's text: the "info" rich-text resource, empty when missing.
class MyAboutObj {
public:
    static MyAboutObj *getAbout();
    void openAbout();
    QString richText() const { return m_text; }
    bool isVisible() const { return m_visible; }

private:
    QString m_text;
    bool m_visible = false;
};

} // namespace korvane
