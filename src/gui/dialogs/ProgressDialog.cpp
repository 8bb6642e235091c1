#include "gui/dialogs/ProgressDialog.h"

#include "core/Texts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace korvane {

namespace {

// Wide enough for a plug-in name and a byte count; a long path is shortened in the middle
// rather than stretching the panel across the screen.
constexpr int TextWidth = 420;
// The bar's steps: finer than any bar is wide.
constexpr int BarSteps = 10000;

QLabel *plainLabel(QWidget *parent, const QString &accessibleName)
{
    auto *label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setFixedWidth(TextWidth);
    label->setAccessibleName(accessibleName);
    return label;
}

} // namespace

ProgressDialog::ProgressDialog(QWidget *parent)
    : QDialog(parent), m_upper(plainLabel(this, korvane::tr("Current item"))),
      m_lower(plainLabel(this, korvane::tr("Details"))), m_bar(new QProgressBar(this)),
      m_cancel(new QPushButton(korvane::tr("Cancel"), this))
{
    m_bar->setTextVisible(false);
    m_bar->setRange(0, BarSteps);
    m_bar->setAccessibleName(korvane::tr("Progress"));
    m_cancel->setAccessibleName(korvane::tr("Cancel"));
    // Enter must not stop the work by accident; only a deliberate Cancel does.
    m_cancel->setAutoDefault(false);
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_cancel, QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &ProgressDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_upper);
    layout->addWidget(m_bar);
    layout->addWidget(m_lower);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void ProgressDialog::setUpperText(const QString &text)
{
    setElided(m_upper, text);
}

void ProgressDialog::setLowerText(const QString &text)
{
    setElided(m_lower, text);
}

void ProgressDialog::setElided(QLabel *label, const QString &text)
{
    label->setText(label->fontMetrics().elidedText(text, Qt::ElideMiddle, TextWidth));
    label->setToolTip(text);
}

void ProgressDialog::setProgress(double value, double maximum)
{
    if (!(maximum > 0) || !std::isfinite(value) || !std::isfinite(maximum)) {
        m_bar->setRange(0, 0);
        return;
    }
    m_bar->setRange(0, BarSteps);
    m_bar->setValue(int(std::clamp(value / maximum, 0.0, 1.0) * BarSteps));
}

void ProgressDialog::reject()
{
    if (m_cancelled)
        return;
    m_cancelled = true;
    m_cancel->setEnabled(false);
    m_cancel->setText(korvane::tr("Stopping..."));
}

} // namespace korvane
