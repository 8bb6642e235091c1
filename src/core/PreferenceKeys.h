#pragma once

#include "core/Format.h"

#include <QLatin1String>
#include <QString>

// Every key of the preferences file, and what each holds. The names are what people's files
// already store: they stay exactly as they are, or those files stop loading.
namespace korvane::PreferenceKeys {

// Whether the window looks for a newer version when it opens (bool; the name is the first
// version's updater's).
inline constexpr QLatin1String CheckForUpdatesAtStartup{"SUCheckAtStartup"};
// The type index of the format whose tab is in front at start-up (integer).
inline constexpr QLatin1String FrontFormat{"ActiveTabView"};
// The main window's size and place (QWidget::saveGeometry).
inline constexpr QLatin1String WindowGeometry{"WindowGeometry"};
// Whether the details pane is shown (bool), and where its splitter stands (QSplitter::saveState).
inline constexpr QLatin1String DetailsPaneShown{"DetailsPaneShown"};
inline constexpr QLatin1String DetailsPaneSplit{"DetailsPaneSplit"};
// Whether the list across formats stands in place of the tabs (bool), and its columns' order,
// widths and sort (QHeaderView::saveState).
inline constexpr QLatin1String AllPluginsInFront{"AllPluginsInFront"};
inline constexpr QLatin1String AllPluginsColumns{"AllPluginsColumns"};

inline constexpr QLatin1String kProgramKeys[] = {
    CheckForUpdatesAtStartup, FrontFormat,       WindowGeometry,    DetailsPaneShown,
    DetailsPaneSplit,         AllPluginsInFront, AllPluginsColumns,
};

// A key each format has once, stored as the row's prefix and the key's name ("AUOn").
enum class FormatKey {
    On,                   // the format has a tab and is scanned (bool)
    ScanSubfolders,       // its scan looks below the top level of each folder (bool)
    ActivateAfterLoading, // a set the launch script or the window loads is applied at once (bool)
    DefaultSet,           // the set the launch script loads: a path, "no set", or empty
    ShowContent,          // the info panel lists a plug-in's companion content (bool)
    MoveContent,          // the companion content moves with its plug-in (bool)
    ArchitectureColumn,   // the table shows the Architecture column (bool)
    TableColumns,         // the table's columns: order, widths, which are hidden (list)
    TableSort,            // the table's sort keys, first key first (list)
};

inline constexpr FormatKey kFormatKeys[] = {
    FormatKey::On,
    FormatKey::ScanSubfolders,
    FormatKey::ActivateAfterLoading,
    FormatKey::DefaultSet,
    FormatKey::ShowContent,
    FormatKey::MoveContent,
    FormatKey::ArchitectureColumn,
    FormatKey::TableColumns,
    FormatKey::TableSort,
};

inline QString forFormat(const Format &format, FormatKey key)
{
    const auto name = [key] {
        switch (key) {
        case FormatKey::On:
            return QLatin1String("On");
        case FormatKey::ScanSubfolders:
            return QLatin1String("ScanSubfolders");
        case FormatKey::ActivateAfterLoading:
            return QLatin1String("ActivateAfterLoading");
        case FormatKey::DefaultSet:
            return QLatin1String("DefaultSet");
        case FormatKey::ShowContent:
            return QLatin1String("ShowContent");
        case FormatKey::MoveContent:
            return QLatin1String("MoveContent");
        case FormatKey::ArchitectureColumn:
            return QLatin1String("Type"); // the first version's name for the column
        case FormatKey::TableColumns:
            return QLatin1String("TableColumns");
        case FormatKey::TableSort:
            return QLatin1String("TableSort");
        }
        return QLatin1String();
    }();
    return format.prefix + name;
}

} // namespace korvane::PreferenceKeys
