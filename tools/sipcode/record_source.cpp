// Reads records from JSON text, see record_source.h.
#include "record_source.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include <fmt/core.h>

#include "record_json.h"

namespace {

using nlohmann::ordered_json;

[[noreturn]] void fail(std::string_view place, std::string_view reason) {
    throw std::runtime_error(fmt::format("{}: {}", place, reason));
}

// "line 2, column 7" for the position of a byte.
std::string line_and_column(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, byte);
    const std::size_t line_begin = before.rfind('\n') + 1; // the first line: npos + 1
    return fmt::format("line {}, column {}", std::count(before.begin(), before.end(), '\n') + 1, byte - line_begin + 1);
}

// The JSON library begins its message with a name and a position that is counted from the start of the value.
std::string_view without_head(std::string_view message) {
    const std::size_t head = message.find(": ");
    return head == std::string_view::npos ? message : message.substr(head + 2);
}

std::vector<ordered_json> parse(const std::string &text, const std::string &name) {
    std::vector<ordered_json> values;
    std::istringstream in(text);
    while (!(in >> std::ws).eof()) {
        const auto begin = static_cast<std::size_t>(in.tellg());
        try {
            in >> values.emplace_back();
        } catch (const ordered_json::parse_error &error) {
            fail(fmt::format("{}: {}", name, line_and_column(text, begin + error.byte - 1)),
                 without_head(error.what()));
        }
    }
    return values;
}

NamedRecord named_record(const std::string &place, ordered_json &value) {
    if (!value.is_object())
        return {place, sipcode::record_from_json(value), ""};
    if (value.contains("refused"))
        return {place, {}, value["refused"].dump()};
    value.erase("start_line");
    return {place, sipcode::record_from_json(value.contains("record") ? value["record"] : value), ""};
}

} // namespace

std::vector<NamedRecord> read_records(const std::string &text, const std::string &name) {
    std::vector<ordered_json> values = parse(text, name);
    if (values.empty())
        fail(name, "no record");
    std::vector<NamedRecord> records;
    for (ordered_json &value : values) {
        const std::string place = values.size() == 1 ? name : fmt::format("{}: record {}", name, records.size() + 1);
        try {
            records.push_back(named_record(place, value));
        } catch (const sipcode::RecordError &error) {
            fail(place, error.what());
        }
    }
    return records;
}
