// Stands in for a program a generated script runs: appends its arguments, argv[0] included, to
// the file named by $KORVANE_RECORD as one record: the count, then each argument, every field
// ended by a NUL byte. No shell and no Qt, so what arrives is exactly what was passed.
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv)
{
    const char *path = std::getenv("KORVANE_RECORD");
    if (!path)
        return 2;
    std::FILE *file = std::fopen(path, "ab");
    if (!file)
        return 2;
    std::fprintf(file, "%d", argc);
    std::fputc('\0', file);
    for (int i = 0; i < argc; ++i) {
        std::fwrite(argv[i], 1, std::strlen(argv[i]), file);
        std::fputc('\0', file);
    }
    return std::fclose(file) == 0 ? 0 : 2;
}
