// A fuzz target as a test: judges each file of the directories that are named.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>

#include "judge.h"

namespace {

// False when it cannot be read.
bool replay_file(const char *path) {
    static char content[fuzz::longest_input];
    std::FILE *const file = std::fopen(path, "rb");
    if (file == nullptr)
        return false;
    const std::size_t size = std::fread(content, 1, sizeof content, file);
    const bool is_whole = std::ferror(file) == 0 && std::fgetc(file) == EOF;
    std::fclose(file);
    if (is_whole)
        LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char *>(content), size);
    return is_whole;
}

// The number of files, -1 when one of them cannot be read.
int replay_directory(const char *directory) {
    DIR *const entries = opendir(directory);
    if (entries == nullptr)
        return -1;
    int replayed = 0;
    while (const dirent *const entry = readdir(entries)) {
        if (entry->d_name[0] == '.')
            continue;
        char path[4096];
        std::snprintf(path, sizeof path, "%s/%s", directory, entry->d_name);
        std::fprintf(stderr, "%s\n", path); // the last one is the one that fails
        if (!replay_file(path))
            return -1;
        ++replayed;
    }
    closedir(entries);
    return replayed;
}

} // namespace

int main(int count, char **directories) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) // the library's own diagnostics
        return EXIT_FAILURE;
    int replayed = 0;
    for (int i = 1; i < count; ++i) {
        const int files = replay_directory(directories[i]);
        if (files <= 0) {
            std::fprintf(stderr, "no files, or one that cannot be read: %s\n", directories[i]);
            return EXIT_FAILURE;
        }
        replayed += files;
    }
    std::fprintf(stderr, "%d files\n", replayed);
    return replayed > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
