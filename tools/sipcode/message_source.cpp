// Messages out of files, see message_source.h.
#include "message_source.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace {

struct Close {
    void operator()(std::FILE *stream) const {
        if (stream != stdin)
            std::fclose(stream);
    }
};

bool is_standard_input(const std::string &file) { return file == "-"; }

bool is_separator(std::string_view line) { return line == "----" || line == "----\n" || line == "----\r\n"; }

} // namespace

std::string read_source(const std::string &file) {
    const std::unique_ptr<std::FILE, Close> stream(is_standard_input(file) ? stdin : std::fopen(file.c_str(), "rb"));
    const auto fail = [&file] { throw std::system_error(errno, std::generic_category(), source_name(file)); };
    if (stream == nullptr)
        fail();
    std::string content;
    char block[16384];
    while (const std::size_t length = std::fread(block, 1, sizeof block, stream.get()))
        content.append(block, length);
    if (std::ferror(stream.get()))
        fail();
    return content;
}

std::string source_name(const std::string &file) { return is_standard_input(file) ? "(standard input)" : file; }

std::vector<std::string_view> split_messages(std::string_view text) {
    std::vector<std::string_view> messages;
    std::size_t begin = 0;
    for (std::size_t line = 0, next = 0; line < text.size(); line = next) {
        const std::size_t line_feed = text.find('\n', line);
        next = line_feed == std::string_view::npos ? text.size() : line_feed + 1;
        if (!is_separator(text.substr(line, next - line)))
            continue;
        if (line > begin)
            messages.push_back(text.substr(begin, line - begin));
        begin = next;
    }
    if (begin < text.size() || messages.empty())
        messages.push_back(text.substr(begin));
    return messages;
}
