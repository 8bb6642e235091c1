// The plug-in table over 10,000 Audio Units on the offscreen platform: showing it after a scan,
// re-sorting, filtering per keystroke, and how many rows a scrolled paint draws; then the page of
// 10,000 Linux VST 3 bundles whose files give vendors, versions and architectures, with the
// columns that show them.

#include "PluginLibraryBuilder.h"
#include "app/AppContext.h"
#include "core/Locations.h"
#include "gui/main/AllPluginsModel.h"
#include "gui/main/AllPluginsView.h"
#include "gui/main/FormatTab.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableView.h"
#include "gui/table/QuickFilterBar.h"
#include "library/FormatManager.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QSet>
#include <QStyledItemDelegate>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <initializer_list>
#include <memory>

using namespace korvane;

namespace {

// Counts what a paint asks the delegate to draw.
class CountingDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    mutable long cells = 0;
    mutable QSet<int> rows;
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        ++cells;
        rows.insert(index.row());
        QStyledItemDelegate::paint(painter, option, index);
    }
};

double elapsedMs(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

QString ms(double value)
{
    return QString::number(value, 'f', 2);
}

// Whatever the event loop still owes the window, then a full paint of the rows on screen.
void settleAndPaint(PluginTableView &view)
{
    QCoreApplication::processEvents();
    view.viewport()->repaint();
}

// The slowest of choosing each of choices in a quick filter's pop-up, each until the rows on
// screen are painted again.
double worstChoiceMs(QComboBox *filter, std::initializer_list<int> choices, QAbstractItemView *view)
{
    double worst = 0;
    for (const int choice : choices) {
        QElapsedTimer timer;
        timer.start();
        filter->setCurrentIndex(choice);
        QCoreApplication::processEvents();
        view->viewport()->repaint();
        worst = std::max(worst, elapsedMs(timer));
    }
    return worst;
}

PluginTableView &tableOf(PluginTableView &view)
{
    return view;
}

PluginTableView &tableOf(FormatTab &page)
{
    return *page.table();
}

// The best of three: a page (a table, or a whole format tab) made for manager after its scan,
// shown at size and painted.
template <typename Page>
double showPageMs(FormatManager &manager, Preferences *preferences, const QSize &size)
{
    double best = 1e300;
    for (int r = 0; r < 3; ++r) {
        QElapsedTimer timer;
        timer.start();
        Page page(manager, preferences);
        page.resize(size);
        page.show();
        settleAndPaint(tableOf(page));
        best = std::min(best, elapsedMs(timer));
    }
    return best;
}

// The resident memory of this process, from /proc.
double residentMb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
    return -1;
}

// n VST 3 bundles as the SDK lays them out, half the system's and half the user's, from 200
// vendors, some built for two architectures.
void makeVst3Library(const Locations &locations, const Format &format, int n)
{
    const QStringList folders{locations.folderPath(format, 0), locations.folderPath(format, 2)};
    for (int i = 0; i < n; ++i) {
        const QString name = QStringLiteral("Plug%1").arg(i, 5, 10, QLatin1Char('0'));
        const QString contents =
            folders.at(i % 2) + QLatin1Char('/') + name + QStringLiteral(".vst3/Contents");
        QDir().mkpath(contents + QStringLiteral("/x86_64-linux"));
        if (i % 3 == 0)
            QDir().mkpath(contents + QStringLiteral("/aarch64-linux"));
        QDir().mkpath(contents + QStringLiteral("/Resources"));
        QFile info(contents + QStringLiteral("/Resources/moduleinfo.json"));
        if (!info.open(QIODevice::WriteOnly))
            continue;
        info.write(QStringLiteral("{ \"Name\": \"%1\", \"Version\": \"1.%2.%3\", "
                                  "\"Factory Info\": { \"Vendor\": \"Vendor %4 Audio\" }, "
                                  "\"Classes\": [] }")
                       .arg(name)
                       .arg(i % 17)
                       .arg(i % 5)
                       .arg(i % 200)
                       .toUtf8());
    }
}

// The format page with the table's newer columns: shown after its scan, sorted by vendor (both
// orders), and a keystroke in the search, which also looks at the vendor.
void measureColumns(int n, QTextStream &out)
{
    QTemporaryDir root, home;
    const Roots roots = Roots::at(root.path(), home.path());
    const Locations locations(roots);
    const int type = FormatTable::builtIn().typeOfName(QStringLiteral("vst3")).value_or(-1);
    makeVst3Library(locations, FormatTable::builtIn().at(type), n);
    AppContext::Parts parts;
    parts.roots = roots;
    parts.prepareWindow = false;
    AppContext context(std::move(parts));
    FormatManager *vst3 = context.manager(type);
    vst3->table().showArchitectureColumn(true);
    vst3->rescan();

    const double show = showPageMs<FormatTab>(*vst3, context.pref(), QSize(1400, 700));
    FormatTab page(*vst3, context.pref());
    page.resize(1400, 700);
    page.show();
    QCoreApplication::processEvents();
    const PluginTableModel &model = page.table()->tableModel();
    QHeaderView *header = page.table()->horizontalHeader();
    double sortWorst = 0;
    double versionWorst = 0;
    for (const QString &column : {QStringLiteral("AUVendor"), QStringLiteral("AUVersion")}) {
        for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            QElapsedTimer timer;
            timer.start();
            header->setSortIndicator(model.columnOf(column), order);
            QCoreApplication::processEvents();
            page.table()->viewport()->repaint();
            const double took = elapsedMs(timer);
            double &worst = column == QLatin1String("AUVendor") ? sortWorst : versionWorst;
            worst = std::max(worst, took);
        }
    }
    // "vendor 1" matches a tenth of the rows by vendor alone, then fewer with each keystroke.
    const QString typed = QStringLiteral("vendor 17");
    double filterWorst = 0;
    for (qsizetype i = 1; i <= typed.size(); ++i) {
        QElapsedTimer timer;
        timer.start();
        page.searchField()->setText(typed.left(i));
        QCoreApplication::processEvents(); // the status line's count
        page.table()->viewport()->repaint();
        filterWorst = std::max(filterWorst, elapsedMs(timer));
    }
    const int matched = page.table()->model()->rowCount();
    page.searchField()->clear();
    QCoreApplication::processEvents();
    page.table()->viewport()->repaint();
    const double archWorst =
        worstChoiceMs(page.filters()->architectureFilter(), {1, 2, 0}, page.table());

    out << "gui_columns_items: " << vst3->rowCount() << "\n";
    out << "gui_columns_show_tab_ms: " << ms(show) << "\n";
    out << "gui_columns_sort_by_vendor_worst_ms: " << ms(sortWorst) << "\n";
    out << "gui_columns_sort_by_version_worst_ms: " << ms(versionWorst) << "\n";
    out << "gui_columns_filter_keystroke_worst_ms: " << ms(filterWorst) << "\n";
    out << "gui_columns_filter_matched: " << matched << "\n";
    out << "gui_columns_architecture_filter_worst_ms: " << ms(archWorst) << "\n";
    out << "gui_rss_mb_" << n << ": " << ms(residentMb()) << "\n";
}

} // namespace

void measureGui(int n, QTextStream &out)
{
    QTemporaryDir root, home;
    const Roots roots = Roots::at(root.path(), home.path());
    const Locations locations(roots);
    const Format &format = FormatTable::builtIn().at(TypeAU);
    const QByteArray headers[] = {MachO::ppc(), MachO::intel(), MachO::universal2()};
    for (int i = 0; i < n; ++i)
        PluginLibraryBuilder::makeAudioUnit(
            locations.folderPath(format, i % 4),
            QStringLiteral("Plug%1").arg(i, 5, 10, QLatin1Char('0')), headers[i % 3]);

    AppContext::Parts parts;
    parts.roots = roots;
    parts.prepareWindow = false;
    AppContext context(std::move(parts));
    FormatManager *au = context.manager(TypeAU);
    au->table().showArchitectureColumn(true);

    // The scan alone, then the scan of a table on screen: the difference is the table's part.
    au->rescan();
    double scan = 1e300;
    for (int r = 0; r < 3; ++r) {
        QElapsedTimer timer;
        timer.start();
        au->rescan();
        scan = std::min(scan, elapsedMs(timer));
    }

    // A tab shown after its scan: the table made, laid out and painted.
    const double show = showPageMs<PluginTableView>(*au, context.pref(), QSize(1000, 700));

    auto view = std::make_unique<PluginTableView>(*au, context.pref());
    view->resize(1000, 700);
    view->show();
    settleAndPaint(*view);

    double scanShown = 1e300;
    for (int r = 0; r < 3; ++r) {
        QElapsedTimer timer;
        timer.start();
        au->rescan();
        settleAndPaint(*view);
        scanShown = std::min(scanShown, elapsedMs(timer));
    }

    // Re-sorting with a hundred plug-ins selected, as a header click does it.
    QList<int> selected;
    for (int row = 0; row < n; row += n / 100)
        selected << row;
    au->table().selectRows(selected);
    QHeaderView *header = view->horizontalHeader();
    double sortWorst = 0;
    double sortBest = 1e300;
    const QStringList keys{QStringLiteral("AUName"), QStringLiteral("AUActive"),
                           QStringLiteral("AUType"), QStringLiteral("AUGroup")};
    for (int r = 0; r < 8; ++r) {
        const int section = view->tableModel().columnOf(keys.at(r % keys.size()));
        const Qt::SortOrder order =
            (r / keys.size()) % 2 ? Qt::AscendingOrder : Qt::DescendingOrder;
        QElapsedTimer timer;
        timer.start();
        header->setSortIndicator(section, order);
        settleAndPaint(*view);
        const double took = elapsedMs(timer);
        sortWorst = std::max(sortWorst, took);
        sortBest = std::min(sortBest, took);
    }
    const bool selectionKept = au->table().selectedItems().size() == selected.size()
                               && view->selectionModel()->selectedRows().size() == selected.size();

    // Typing into the search field and clearing it again, a keystroke at a time.
    const QString typed = QStringLiteral("plug07");
    QStringList steps;
    for (qsizetype i = 1; i <= typed.size(); ++i)
        steps << typed.left(i);
    for (qsizetype i = typed.size() - 1; i >= 0; --i)
        steps << typed.left(i);
    double filterWorst = 0;
    double filterTotal = 0;
    for (const QString &text : std::as_const(steps)) {
        QElapsedTimer timer;
        timer.start();
        view->setFilterText(text);
        settleAndPaint(*view);
        const double took = elapsedMs(timer);
        filterWorst = std::max(filterWorst, took);
        filterTotal += took;
    }

    // Scrolling: what one paint draws, against what is on screen and what the list holds.
    auto *counting = new CountingDelegate(view.get());
    view->setItemDelegate(counting);
    QScrollBar *bar = view->verticalScrollBar();
    const int pages = 20;
    double scrollTotal = 0;
    long cells = 0;
    long rowsPainted = 0;
    for (int page = 1; page <= pages; ++page) {
        bar->setValue(bar->maximum() * page / (pages + 1));
        QCoreApplication::processEvents();
        counting->cells = 0;
        counting->rows.clear();
        QElapsedTimer timer;
        timer.start();
        view->viewport()->repaint();
        scrollTotal += elapsedMs(timer);
        cells += counting->cells;
        rowsPainted += counting->rows.size();
    }
    const int top = view->rowAt(0);
    const int bottom = view->rowAt(view->viewport()->height() - 1);
    const int visible = (bottom < 0 ? view->model()->rowCount() - 1 : bottom) - top + 1;

    // The whole page of a format as the window shows it: the set bar, the status line, the quick
    // filters and the table; then a keystroke in its search field with the status line counted
    // again, and a quick filter switched.
    view.reset();
    const double showPage = showPageMs<FormatTab>(*au, context.pref(), QSize(1100, 700));
    FormatTab page(*au, context.pref());
    page.resize(1100, 700);
    page.show();
    QCoreApplication::processEvents();
    double pageFilterWorst = 0;
    for (const QString &text : std::as_const(steps)) {
        QElapsedTimer timer;
        timer.start();
        page.searchField()->setText(text);
        QCoreApplication::processEvents(); // the status line's count
        page.table()->viewport()->repaint();
        pageFilterWorst = std::max(pageFilterWorst, elapsedMs(timer));
    }
    const double quickFilterWorst = worstChoiceMs(page.stateFilter(), {2, 1, 0}, page.table());
    double sortNameWorst = 0;
    QHeaderView *pageHeader = page.table()->horizontalHeader();
    for (const Qt::SortOrder order : {Qt::DescendingOrder, Qt::AscendingOrder}) {
        QElapsedTimer timer;
        timer.start();
        pageHeader->setSortIndicator(page.table()->tableModel().columnOf(QStringLiteral("AUName")),
                                     order);
        QCoreApplication::processEvents();
        page.table()->viewport()->repaint();
        sortNameWorst = std::max(sortNameWorst, elapsedMs(timer));
    }

    // The list across formats: switching to it groups every plug-in into products, sorts them
    // and paints; the first switch after a rescan is the one that groups.
    page.hide();
    AllPluginsView all(context.managers());
    all.resize(1100, 700);
    double switchAll = 1e300;
    for (int r = 0; r < 3; ++r) {
        all.setInUse(false);
        all.hide();
        au->rescan();
        QCoreApplication::processEvents();
        QElapsedTimer timer;
        timer.start();
        all.show();
        all.setInUse(true);
        QCoreApplication::processEvents();
        all.tree()->viewport()->repaint();
        switchAll = std::min(switchAll, elapsedMs(timer));
    }
    double allFilterWorst = 0;
    for (const QString &text : std::as_const(steps)) {
        QElapsedTimer timer;
        timer.start();
        all.searchField()->setText(text);
        QCoreApplication::processEvents();
        all.tree()->viewport()->repaint();
        allFilterWorst = std::max(allFilterWorst, elapsedMs(timer));
    }

    // Its quick filters look at every plug-in of every product.
    all.searchField()->clear();
    const double allQuickWorst = worstChoiceMs(all.filters()->stateFilter(), {2, 1, 0}, all.tree());

    out << "gui_items: " << au->rowCount() << "\n";
    out << "gui_switch_to_all_formats_ms: " << ms(switchAll) << "\n";
    out << "gui_all_formats_products: " << all.model().products().size() << "\n";
    out << "gui_all_formats_filter_keystroke_worst_ms: " << ms(allFilterWorst) << "\n";
    out << "gui_all_formats_quick_filter_worst_ms: " << ms(allQuickWorst) << "\n";
    out << "gui_show_format_page_ms: " << ms(showPage) << "\n";
    out << "gui_page_filter_keystroke_worst_ms: " << ms(pageFilterWorst) << "\n";
    out << "gui_quick_filter_worst_ms: " << ms(quickFilterWorst) << "\n";
    out << "gui_sort_by_name_natural_worst_ms: " << ms(sortNameWorst) << "\n";
    out << "gui_show_tab_ms: " << ms(show) << "\n";
    out << "gui_scan_ms: " << ms(scan) << "\n";
    out << "gui_scan_with_table_shown_ms: " << ms(scanShown) << "\n";
    out << "gui_table_share_of_rescan_ms: " << ms(scanShown - scan) << "\n";
    out << "gui_sort_best_ms: " << ms(sortBest) << "\n";
    out << "gui_sort_worst_ms: " << ms(sortWorst) << "\n";
    out << "gui_sort_keeps_selection: " << (selectionKept ? "yes" : "no") << "\n";
    out << "gui_filter_keystroke_mean_ms: " << ms(filterTotal / static_cast<double>(steps.size()))
        << "\n";
    out << "gui_filter_keystroke_worst_ms: " << ms(filterWorst) << "\n";
    out << "gui_visible_rows: " << visible << "\n";
    out << "gui_rows_painted_per_scroll: " << ms(double(rowsPainted) / pages) << "\n";
    out << "gui_cells_painted_per_scroll: " << ms(double(cells) / pages) << "\n";
    out << "gui_painted_to_visible_ratio: " << ms(double(rowsPainted) / pages / visible) << "\n";
    out << "gui_painted_to_all_rows_ratio: "
        << QString::number(double(rowsPainted) / pages / n, 'f', 4) << "\n";
    out << "gui_scroll_paint_ms: " << ms(scrollTotal / pages) << "\n";
    // The memory is taken once both pages were shown.
    measureColumns(n, out);
    out.flush();
}
