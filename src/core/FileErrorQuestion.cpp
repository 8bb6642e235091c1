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
    alert.messageText =
        fillFormat(korvane::tr("File operation error...\n error: %@\n with file: %@"),
                   {korvane::tr(reason.constData()), error.path});
    alert.buttons = {korvane::tr("Proceed"), korvane::tr("Stop")};
    return ui.runAlert(alert) == AlertAnswer::Default ? FileErrorAnswer::Proceed
                                                      : FileErrorAnswer::Stop;
}

} // namespace korvane
