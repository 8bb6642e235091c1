#include "core/FileErrorQuestion.h"

#include "core/Texts.h"
#include "core/UserInterface.h"
#include "os/FileOperations.h"

namespace korvane {

FileErrorAnswer askToProceedAfter(UserInterface &ui, const FileError &error)
{
    const QByteArray reason = error.reason.toUtf8();
    Alert alert;
    alert.title = QStringLiteral("Korvane");
    alert.messageText = korvane::tr("File operation error...\n error: %1\n with file: %2")
                            .arg(korvane::tr(reason.constData()), error.path);
    alert.buttons = {korvane::tr("Proceed"), korvane::tr("Stop")};
    return ui.runAlert(alert) == AlertAnswer::Default ? FileErrorAnswer::Proceed
                                                      : FileErrorAnswer::Stop;
}

} // namespace korvane
