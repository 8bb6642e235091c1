#include "library/Reporting.h"

#include "core/ActivityLog.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "os/SystemLog.h"

#include <QLocale>
#include <memory>

namespace korvane {

namespace {

QString filled(const QString &format, const QStringList &args)
{
    // All at once: a path holding "%1" must not be taken for a place to fill.
    switch (args.size()) {
    case 0:
        return format;
    case 1:
        return format.arg(args.at(0));
    case 2:
        return format.arg(args.at(0), args.at(1));
    case 3:
        return format.arg(args.at(0), args.at(1), args.at(2));
    default:
        return format.arg(args.at(0), args.at(1), args.at(2), args.value(3));
    }
}

} // namespace

void tell(ActivityLog &log, const char *text, const QStringList &args)
{
    QString english = filled(QString::fromUtf8(text), args);
    if (english.endsWith(QLatin1Char('\n')))
        english.chop(1);
    systemNotice(english);
    QString shown = filled(korvane::tr(text), args);
    if (!shown.endsWith(QLatin1Char('\n')))
        shown += QLatin1Char('\n');
    log.append(shown);
}

CopyProgress copyProgressFor(UserInterface &userInterface, const int &item, int count)
{
    UserInterface *ui = &userInterface;
    auto shownPercent = std::make_shared<int>(-1);
    return [ui, &item, count, shownPercent](qint64 copied, qint64 total) {
        // A small copy is over before anyone could read its figures.
        if (total < LongCopyBytes)
            return;
        const double part = double(copied) / double(total);
        ui->progressValue(item + part, count);
        // The text changes once per percent: formatting it per block written would cost more
        // than the copy of a small file.
        const int percent = int(part * 100);
        if (percent == *shownPercent)
            return;
        *shownPercent = percent;
        const QLocale locale;
        ui->progressDetail(
            korvane::tr("%1 of %2")
                .arg(locale.formattedDataSize(copied), locale.formattedDataSize(total)));
    };
}

} // namespace korvane
