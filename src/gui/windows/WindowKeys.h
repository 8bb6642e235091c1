#pragma once

class QWidget;

namespace korvane {

// Escape and Ctrl+W close a secondary window, as they close a dialog; the window's own close
// handling (the log's menu state, the info panel's model) runs as for its close button.
void closeWithKeys(QWidget &window);

} // namespace korvane
