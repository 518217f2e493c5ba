// Small helpers around the codec's records, see records.h.
#include "records.h"

#include <algorithm>

#include <fmt/format.h>

#include <sipcode/code.h>

std::string_view name_of(int method) {
    return method > SIP_REQUEST_MSG_UNKNOWN && method < SIP_CODE_METHOD_COUNT ? decode_methods[method].text : "unknown";
}

bool is_method(int identifier) {
    return identifier >= SIP_REQUEST_MSG_REGISTER && identifier <= SIP_REQUEST_MSG_PUBLISH;
}

std::string title(const Received &message) {
    const std::string_view name = name_of(message.method);
    const std::string status = std::to_string(message.status);
    return std::string(message.status == 0 || name.starts_with(status) ? name : status); // some share an identifier
}

namespace {

// Takes the first tag off a list, with the blanks around it.
std::string_view take_tag(std::string_view &tags) {
    const std::size_t comma = std::min(tags.find(','), tags.size());
    std::string_view tag = tags.substr(0, comma);
    tag.remove_prefix(std::min(tag.find_first_not_of(" \t"), tag.size()));
    tags.remove_prefix(std::min(comma + 1, tags.size()));
    return tag.substr(0, tag.find_last_not_of(" \t") + 1);
}

} // namespace

bool lists(std::string_view tags, std::string_view wanted) {
    while (!tags.empty())
        if (take_tag(tags) == wanted)
            return true;
    return false;
}

bool lists_all(std::string_view tags, std::string_view wanted) {
    while (!wanted.empty())
        if (!lists(tags, take_tag(wanted)))
            return false;
    return true;
}

std::string printable(std::string_view text) {
    const std::string quoted = fmt::format("{:?}", text);
    return quoted.substr(1, quoted.size() - 2);
}
