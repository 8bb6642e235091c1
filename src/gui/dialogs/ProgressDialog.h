#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace korvane {

// The panel shown while long work runs: a title, an upper and a lower line, a bar and Cancel.
// Cancel only asks: the work stops at its next check, so the dialog stays until the work ends.
class ProgressDialog : public QDialog {
    Q_OBJECT
public:
    explicit ProgressDialog(QWidget *parent = nullptr);

    void setUpperText(const QString &text);
    void setLowerText(const QString &text);
    // A maximum of 0 or less shows a bar that only says something is happening.
    void setProgress(double value, double maximum);
    bool isCancelled() const { return m_cancelled; }

    // Escape and the close box ask to stop, like Cancel.
    void reject() override;

private:
    void setElided(QLabel *label, const QString &text);

    QLabel *m_upper;
    QLabel *m_lower;
    QProgressBar *m_bar;
    QPushButton *m_cancel;
    bool m_cancelled = false;
};

} // namespace korvane
