#include "gui/windows/AboutPanel.h"

#include "app/AboutText.h"
#include "core/Texts.h"

#include <QLabel>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace korvane {

AboutPanel::AboutPanel(AboutText &about, QWidget *parent)
    : QWidget(parent, Qt::Window), m_about(about)
{
    setWindowTitle(korvane::tr("About Korvane"));
    setAccessibleName(korvane::tr("About Korvane"));
    m_text = new QTextBrowser(this);
    m_text->setObjectName(QStringLiteral("stData"));
    m_text->setAccessibleName(korvane::tr("About text"));
    // The text is ours, but nothing in it is followed: no file or address opens from here.
    m_text->setOpenLinks(false);
    m_text->setOpenExternalLinks(false);
    auto *version = new QLabel(korvane::tr("Korvane %1").arg(AboutText::version()), this);
    version->setObjectName(QStringLiteral("stVersion"));
    version->setTextFormat(Qt::PlainText);
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    version->setContentsMargins(8, 6, 8, 2);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(version);
    layout->addWidget(m_text);
    resize(460, 380);
}

void AboutPanel::openAbout()
{
    m_about.open();
    // The resource's own RTF, converted with every character of its text escaped.
    m_text->setHtml(m_about.html());
    show();
    raise();
    activateWindow();
}

} // namespace korvane
