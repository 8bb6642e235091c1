#pragma once

#include <QWidget>

class QTextBrowser;

namespace korvane {

class AboutText;

// The about panel: the program's own "info" text, as rich text.
class AboutPanel : public QWidget {
    Q_OBJECT
public:
    explicit AboutPanel(AboutText &about, QWidget *parent = nullptr);

    void openAbout(); // reads the text afresh and brings the panel to the front
    QTextBrowser *text() const { return m_text; }

private:
    AboutText &m_about;
    QTextBrowser *m_text = nullptr;
};

} // namespace korvane
