// A fuzz target as a test: judges each file of the named directories and its variants, prefixes and replaced bytes.
// Usage: fuzz_replay_TARGET [--variants N] DIRECTORY...     N of each kind a file; 300 unless given
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>

#include "judge.h"

namespace {

std::size_t variants = 300; // of each kind

void judge(const char *bytes, std::size_t size) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char *>(bytes), size);
}

// Places are spread over the text. The replacements are bytes that separate its parts, in turn.
void judge_variants(char *text, std::size_t size) {
    static constexpr char bytes[] = "\r\n,;:=\"<>@%/ \0\1a5\xFF";
    const std::size_t step = size / (variants + 1) + 1;
    std::size_t turn = size;
    for (std::size_t at = 0; variants != 0 && at < size; at += step) {
        judge(text, at);
        const char kept = text[at];
        text[at] = bytes[++turn % (sizeof bytes - 1)];
        judge(text, size);
        text[at] = kept;
    }
}

// Returns false if the file cannot be read.
bool replay_file(const char *path) {
    static char content[fuzz::longest_input];
    std::FILE *const file = std::fopen(path, "rb");
    if (file == nullptr)
        return false;
    const std::size_t size = std::fread(content, 1, sizeof content, file);
    const bool is_whole = std::ferror(file) == 0 && std::fgetc(file) == EOF;
    std::fclose(file);
    if (is_whole) {
        judge(content, size);
        judge_variants(content, size);
    }
    return is_whole;
}

// Returns the number of files, -1 if one cannot be read.
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
    int first = 1;
    if (count > 2 && std::strcmp(directories[1], "--variants") == 0) {
        variants = std::strtoul(directories[2], nullptr, 10);
        first = 3;
    }
    int replayed = 0;
    for (int i = first; i < count; ++i) {
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
