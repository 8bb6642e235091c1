#include "gui/windows/LaunchScriptPanel.h"

#include "app/LaunchScript.h"
#include "core/FormatTable.h"
#include "core/Texts.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvane {

LaunchScriptPanel::LaunchScriptPanel(LaunchScript &script, const FormatTable &formats,
                                     QWidget *parent)
    : QWidget(parent, Qt::Window), m_script(script)
{
    setWindowTitle(korvane::tr("Launch Script"));
    setAccessibleName(korvane::tr("Launch Script"));

    auto *segments = new QHBoxLayout;
    segments->setSpacing(0);
    auto *segmentsLabel = new QLabel(korvane::tr("Apply the selected set of:"), this);
    segmentsLabel->setTextFormat(Qt::PlainText);
    segments->addWidget(segmentsLabel);
    segments->addSpacing(8);
    for (const Format &format : formats) {
        auto *button = new QPushButton(this);
        button->setText(format.tabLabel);
        button->setObjectName(QStringLiteral("sctrlType") + format.prefix);
        button->setAccessibleName(format.tabLabel);
        button->setCheckable(true);
        const int type = format.type;
        connect(button, &QPushButton::clicked, this, [this, type](bool checked) {
            m_script.setFormatSelected(type, checked);
            m_script.rebuild();
        });
        segments->addWidget(button);
        m_segments << button;
    }
    segments->addStretch();

    m_text = new QPlainTextEdit(this);
    m_text->setObjectName(QStringLiteral("teScript"));
    m_text->setAccessibleName(korvane::tr("Script"));
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    connect(m_text, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_showing)
            m_script.setScript(m_text->toPlainText());
    });

    // Only the shell layout runs a host of the user's choosing.
    auto *hostRow = new QHBoxLayout;
    auto *hostLabel = new QLabel(korvane::tr("Then run:"), this);
    hostLabel->setTextFormat(Qt::PlainText);
    m_host = new QLineEdit(script.hostCommand(), this);
    m_host->setObjectName(QStringLiteral("etHostCommand"));
    m_host->setAccessibleName(korvane::tr("Host command line"));
    m_host->setPlaceholderText(korvane::tr("e.g. ardour8 \"My Session\""));
    hostLabel->setBuddy(m_host);
    connect(m_host, &QLineEdit::textEdited, this,
            [this](const QString &text) { m_script.setHostCommand(text); });
    hostRow->addWidget(hostLabel);
    hostRow->addWidget(m_host, 1);
    const bool shell = script.layout() == LaunchScript::Layout::Shell;
    hostLabel->setVisible(shell);
    m_host->setVisible(shell);

    m_save = new QPushButton(korvane::tr("Save..."), this);
    m_save->setObjectName(QStringLiteral("pbSaveScript"));
    m_save->setAccessibleName(korvane::tr("Save the script"));
    connect(m_save, &QPushButton::clicked, this, [this] { m_script.saveScript(); });
    auto *saveRow = new QHBoxLayout;
    saveRow->addStretch();
    saveRow->addWidget(m_save);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(segments);
    layout->addWidget(m_text, 1);
    layout->addLayout(hostRow);
    layout->addLayout(saveRow);
    resize(620, 340);

    connect(&script, &LaunchScript::selectedFormatsChanged, this, &LaunchScriptPanel::showSegments);
    connect(&script, &LaunchScript::scriptChanged, this, &LaunchScriptPanel::showScript);
    connect(&script, &LaunchScript::windowShown, this, [this] {
        show();
        raise();
        activateWindow();
    });
    showSegments();
    showScript();
}

void LaunchScriptPanel::openScriptWindow()
{
    m_script.openWindow(); // windowShown brings the panel up
}

void LaunchScriptPanel::showSegments()
{
    for (int type = 0; type < m_segments.size(); ++type)
        m_segments.at(type)->setChecked(m_script.isFormatSelected(type));
}

void LaunchScriptPanel::showScript()
{
    m_showing = true;
    m_text->setPlainText(m_script.script());
    m_showing = false;
}

} // namespace korvane
