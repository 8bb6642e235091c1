#pragma once

#include <QList>
#include <QWidget>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace korvane {

class FormatTable;
class LaunchScript;

// The launch-script panel: one independent button per format choosing whose selected set the
// script applies, the script itself (rebuilt at every change, editable before saving), the host
// command line the shell script runs afterwards, and Save.
class LaunchScriptPanel : public QWidget {
    Q_OBJECT
public:
    LaunchScriptPanel(LaunchScript &script, const FormatTable &formats, QWidget *parent = nullptr);

    void openScriptWindow(); // builds the script and brings the panel to the front
    QPushButton *segment(int type) const { return m_segments.value(type); }
    QPlainTextEdit *scriptText() const { return m_text; }
    QLineEdit *hostCommand() const { return m_host; }
    QPushButton *saveButton() const { return m_save; }

private:
    void showSegments();
    void showScript();

    LaunchScript &m_script;
    QList<QPushButton *> m_segments; // by type index
    QPlainTextEdit *m_text = nullptr;
    QLineEdit *m_host = nullptr;
    QPushButton *m_save = nullptr;
    bool m_showing = false;
};

} // namespace korvane
