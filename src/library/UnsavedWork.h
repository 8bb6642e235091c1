#pragma once

#include <QString>

namespace korvane {

class ActivityLog;
class FormatManager;
class SetController;
class UserInterface;
struct FileError;

// What a person would lose when a command starts over (Quit, Rescan, New, another set): marks
// not applied and edits to the open set. Each question names what would be lost and has a
// Cancel that leaves everything as it is.
class UnsavedWork {
public:
    // "3 changes not applied": Apply / Discard / Cancel. True when the command may go on
    // (applied, discarded, or nothing pending). Apply is the manager's whole apply.
    static bool settleMarks(FormatManager &manager);
    // "Save changes to the set “Live Gig”?": Save / Don't Save / Cancel. True when the command
    // may go on. A save that fails is said and counts as Cancel.
    static bool settleSetEdits(SetController &sets, UserInterface &ui);
    // The set first, then the marks.
    static bool settle(FormatManager &manager);

    // The set's name as a person knows it: its file name without the extension.
    static QString setTitle(const QString &path);
    // Says that a set could not be written, where and why.
    static void reportSetNotSaved(ActivityLog &log, UserInterface &ui, const FileError &error);
};

} // namespace korvane
