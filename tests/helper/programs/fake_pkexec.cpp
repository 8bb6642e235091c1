// Stands in for pkexec in the client's tests. FAKE_PKEXEC_MODE says what it does:
//   run (or unset)  runs the program it is given, as pkexec does once the right is granted
//   deny            says so and exits 126, as when the person cancels or polkit refuses
//   noagent         says so and exits 127, as when no authentication agent is there
//   garbage         answers a line no helper writes
//   flood           answers far more than any helper would
//   crash           dies of a signal
// Like pkexec it passes on standard input and output, and takes only an absolute program.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

int main(int argc, char *argv[])
{
    const char *mode = std::getenv("FAKE_PKEXEC_MODE");
    const std::string what = mode ? mode : "run";
    if (what == "deny") {
        std::fputs("Error executing command as another user: Not authorized\n\n"
                   "This incident has been reported.\n",
                   stderr);
        return 126;
    }
    if (what == "noagent") {
        std::fputs("Error executing command as another user: No authentication agent found.\n",
                   stderr);
        return 127;
    }
    if (what == "garbage") {
        std::puts("{\"hello\": \"world\"}");
        return 0;
    }
    if (what == "flood") {
        const std::string block(1 << 20, 'x');
        for (int i = 0; i < 80; ++i)
            if (std::fwrite(block.data(), 1, block.size(), stdout) != block.size())
                return 1;
        return 0;
    }
    if (what == "crash") {
        std::raise(SIGKILL);
        return 1;
    }
    if (argc < 2 || argv[1][0] != '/') {
        std::fputs("pkexec: the program must be given by its absolute path\n", stderr);
        return 127;
    }
    ::execv(argv[1], argv + 1);
    std::fprintf(stderr, "Cannot run program %s: %s\n", argv[1], std::strerror(errno));
    return 127;
}
