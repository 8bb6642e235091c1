#include "gui/Translations.h"

#include <QCoreApplication>

namespace korvane {

void installTranslations(QCoreApplication &) {}

} // namespace korvane
