// Stands in for a program a generated script runs: appends its arguments, argv[0] included, to
// the file named by $KORVANE_RECORD as one record: the count, then each argument, every field
// ended by a NUL byte. No shell and no Qt, so what arrives is exactly what was passed.
#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    const char *path = std::getenv("KORVANE_RECORD");
    std::FILE *file = path ? std::fopen(path, "ab") : nullptr;
    if (!file)
        return 2;
    std::fprintf(file, "%d%c", argc, '\0');
    for (int i = 0; i < argc; ++i)
        std::fprintf(file, "%s%c", argv[i], '\0');
    return std::fclose(file) == 0 ? 0 : 2;
}
