#pragma once

#include <QString>

namespace korvane {

// The about panel's text: the "info" rich-text resource as HTML, empty when missing.
class AboutText {
public:
    // resources: the run's KORVANE_RESOURCES, looked in before the installed places.
    explicit AboutText(const QString &resources = QString()) : m_resources(resources) {}

    void open(); // reads the text afresh
    QString html() const { return m_html; }
    // The program's version, as --version and the about panel show it: "1.2".
    static QString version();

private:
    QString m_resources;
    QString m_html;
};

} // namespace korvane
