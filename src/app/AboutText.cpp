#include "app/AboutText.h"

#include "codec/RtfText.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>

namespace korvane {

namespace {
// Where the "info" resource may lie, most specific first; there is no application bundle. The
// build puts a copy beside the program, so a run from the build tree finds it too.
QStringList resourceCandidates(const QString &resources)
{
    const QString fileName = QStringLiteral("info.rtf");
    QStringList candidates;
    if (!resources.isEmpty())
        candidates << resources + QLatin1Char('/') + fileName;
    if (QCoreApplication::instance()) {
        const QString dir = QCoreApplication::applicationDirPath();
        candidates << dir + QStringLiteral("/../share/korvane/") + fileName;
        candidates << dir + QLatin1Char('/') + fileName;
    }
    return candidates;
}
} // namespace

QString AboutText::version()
{
    return QStringLiteral(KORVANE_VERSION);
}

void AboutText::open()
{
    m_html.clear();
    for (const QString &candidate : resourceCandidates(m_resources)) {
        QFile file(candidate);
        if (file.open(QIODevice::ReadOnly)) {
            m_html = RtfText::toHtml(file.read(RtfText::maxInputSize));
            break;
        }
    }
}

} // namespace korvane
