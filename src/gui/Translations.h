#pragma once

class QCoreApplication;

namespace korvane {

// Loads the translation of the user's language, if one ships, into app.
void installTranslations(QCoreApplication &app);

} // namespace korvane
