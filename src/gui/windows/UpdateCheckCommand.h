#pragma once

namespace korvane {

class UserInterface;

// Check for Update as the window runs it: a busy cursor while the version list is fetched (the
// windows keep painting, input waits), then the answer through the interface, which opens the
// download page with the desktop's browser when asked to.
class UpdateCheckCommand {
public:
    static void run(UserInterface &ui);
};

} // namespace korvane
