#pragma once

namespace korvane {

class FileOperations;
class FormatTable;
class Locations;
class LockTable;
class UserInterface;

// What every controller of one run works with: where its paths lie, how it touches the disk,
// whom it asks, and which formats it knows. AppContext makes them and outlives every user.
struct RunParts {
    const Locations &locations;
    FileOperations &files;
    UserInterface &ui;
    const FormatTable &formats;
    LockTable &locks;    // the folder locks the run holds, shared by every mover in it
    int lockWaitMs = -1; // how long a mover waits for another's lock; negative: the lock's own
};

} // namespace korvane
