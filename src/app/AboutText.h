#pragma once

#include <QString>

namespace korvane {

// The about panel's text: the "info" rich-text resource, empty when missing. richText() is the
// resource as it stands, html() the same text for a view that shows HTML.
class AboutText {
public:
    void open(); // reads the text afresh
    QString richText() const { return m_text; }
    QString html() const { return m_html; }
    bool isVisible() const { return m_visible; }

private:
    QString m_text;
    QString m_html;
    bool m_visible = false;
};

} // namespace korvane
