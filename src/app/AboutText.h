#pragma once

#include <QString>

namespace korvane {

// The about panel's text: the "info" rich-text resource as HTML, empty when missing.
class AboutText {
public:
    void open(); // reads the text afresh
    QString html() const { return m_html; }
    // The program's version, as --version and the about panel show it: "1.2".
    static QString version();

private:
    QString m_html;
};

} // namespace korvane
