// How libFuzzer changes the text of a record: mostly member by member, as few random texts name one.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <random>

#include "judge.h"

extern "C" std::size_t LLVMFuzzerMutate(unsigned char *data, std::size_t size, std::size_t most);

namespace {

constexpr const char *numbers[] = {
    "0",  "1",  "2",   "3",   "5",    "16",         "20",          "48",
    "49", "-1", "101", "103", "5060", "2147483647", "-2147483648", "9223372036854775807"};
constexpr const char *texts[] = {
    "",       "a",      "10.0.0.1", "ims-a@b", "a\\+",   "\\r\\nX: y", "a,",        "\"",
    "<>",     "a b",    "%41",      "0.0.0.0", "dialog", "\\\\",       "a=x\\r\\n", "c=IN IP4 10.0.0.9\\r\\n",
    "\\x00b", ";tag=x", "\xFF"};

template <std::size_t N>
const char *one_of(const char *const (&values)[N], std::minstd_rand &draw) {
    return values[draw() % N];
}

// "path=value" with a line end, at the end of the text; 0 when it does not fit.
std::size_t append_line(char *text, std::size_t size, std::size_t most, std::minstd_rand &draw) {
    const auto all = fuzz::leaves();
    const fuzz::Leaf &leaf = all[draw() % all.size()];
    const char *const value = leaf.is_text() ? one_of(texts, draw) : one_of(numbers, draw);
    const int length = std::snprintf(text + size, most - size, "%s=%s\n", leaf.path, value);
    return length < static_cast<int>(most - size) ? size + static_cast<std::size_t>(length) : 0;
}

// The line at a random place.
std::pair<char *, char *> line_in(char *text, std::size_t size, std::minstd_rand &draw) {
    char *const at = text + draw() % size;
    char *const begin = std::find(std::make_reverse_iterator(at), std::make_reverse_iterator(text), '\n').base();
    return {begin, std::find(at, text + size, '\n')};
}

std::size_t drop_line(char *text, std::size_t size, std::minstd_rand &draw) {
    const auto [begin, end] = line_in(text, size, draw);
    char *const rest = std::min(end + 1, text + size);
    std::memmove(begin, rest, static_cast<std::size_t>(text + size - rest));
    return size - static_cast<std::size_t>(rest - begin);
}

std::size_t change_value(char *text, std::size_t size, std::size_t most, std::minstd_rand &draw) {
    static unsigned char value[512];
    const auto [line, end] = line_in(text, size, draw);
    char *const begin = std::min(std::find(line, end, '=') + 1, end);
    const auto length = static_cast<std::size_t>(end - begin);
    if (length > sizeof value / 2)
        return 0;
    std::memcpy(value, begin, length);
    const std::size_t changed = LLVMFuzzerMutate(value, length, sizeof value);
    if (size - length + changed > most)
        return 0;
    std::memmove(begin + changed, end, static_cast<std::size_t>(text + size - end));
    std::memcpy(begin, value, changed);
    return size - length + changed;
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(unsigned char *data, std::size_t size, std::size_t most, unsigned seed) {
    std::minstd_rand draw(seed);
    char *const text = reinterpret_cast<char *>(data);
    std::size_t changed = 0;
    switch (size == 0 ? 0 : draw() % 8) {
    case 0:
    case 1:
    case 2:
        changed = append_line(text, size, most, draw);
        break;
    case 3:
        changed = drop_line(text, size, draw);
        break;
    case 4:
    case 5:
    case 6:
        changed = change_value(text, size, most, draw);
        break;
    default:
        break;
    }
    return changed != 0 ? changed : LLVMFuzzerMutate(data, size, most);
}
