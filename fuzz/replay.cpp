// A fuzz target as a test: judges each file and its variants, which are prefixes and replaced bytes.
// Usage: fuzz_replay_TARGET [--variants N] FILE...     N variants of each kind; 300 unless given
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

} // namespace

int main(int count, char **arguments) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) // the library's own diagnostics
        return EXIT_FAILURE;
    int first = 1;
    if (count > 2 && std::strcmp(arguments[1], "--variants") == 0) {
        variants = std::strtoul(arguments[2], nullptr, 10);
        first = 3;
    }
    for (int i = first; i < count; ++i) {
        std::fprintf(stderr, "%s\n", arguments[i]); // the last one is the one that fails
        if (!replay_file(arguments[i]))
            return EXIT_FAILURE;
    }
    return first < count ? EXIT_SUCCESS : EXIT_FAILURE;
}
