#pragma once

class QWidget;

namespace korvane {

class PreferenceStore;

// The main window's size and place between runs, in the preferences file. A saved place comes
// back only as far as the screens of this run allow: never larger than the screen, never off it.
// The front tab and each table's columns and sort order are kept by their own owners.
namespace WindowState {

void restore(QWidget &window, PreferenceStore *store);
void save(const QWidget &window, PreferenceStore *store);
// The smallest the main window may be: every control of the set bar still reachable.
void setMinimum(QWidget &window);

} // namespace WindowState

} // namespace korvane
