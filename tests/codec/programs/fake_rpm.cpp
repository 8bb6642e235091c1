// Stands in for rpm in the package tests: logs its arguments (joined by '|') to $FAKE_RPM_LOG and
// answers -qf and -q from $FAKE_RPM_FILES ("path<TAB>package" lines) the way rpm prints them.
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

int main(int argc, char **argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    if (const char *log = std::getenv("FAKE_RPM_LOG")) {
        std::ofstream out(log, std::ios::app);
        for (size_t i = 0; i < args.size(); ++i)
            out << (i ? "|" : "") << args[i];
        out << '\n';
    }
    std::multimap<std::string, std::string> owners; // path -> package
    if (const char *files = std::getenv("FAKE_RPM_FILES")) {
        std::ifstream in(files);
        std::string line;
        while (std::getline(in, line)) {
            const auto tab = line.find('\t');
            if (tab != std::string::npos)
                owners.emplace(line.substr(0, tab), line.substr(tab + 1));
        }
    }
    if (args.size() < 5)
        return 2;
    int status = 0;
    const std::vector<std::string> rest(args.begin() + 5, args.end());
    if (args[2] == "-qf") {
        for (const std::string &path : rest) {
            const auto range = owners.equal_range(path);
            if (range.first == range.second) {
                std::cout << "file " << path << " is not owned by any package\n";
                status = 1;
            }
            for (auto it = range.first; it != range.second; ++it)
                std::cout << it->second << '\n';
        }
    } else if (args[2] == "-q") {
        const std::set<std::string> packages(rest.begin(), rest.end());
        for (const auto &[path, package] : owners) {
            if (packages.count(package))
                std::cout << path << '\t' << package << '\n';
        }
    }
    return status;
}
