#include <cstdio>
#include <cstring>

#include <sipcode/decode.h>
#include <sipcode/safe.h>

#include "judge.h"

namespace fuzz {
namespace {

// A message that is built anew, as long as it can be decoded.
class Rebuilt {
  public:
    void add(std::string_view part) {
        fits &= size + part.size() <= SIP_LONGEST_MESSAGE;
        if (fits)
            size += part.copy(text + size, part.size());
    }
    char *terminated() {
        text[size] = '\0';
        return text;
    }
    bool fits = true;

  private:
    char text[SIP_LONGEST_MESSAGE + 1];
    std::size_t size = 0;
};

// Whether a line with this text ends where the text does.
bool is_plain(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n")) == text.npos && !text.ends_with(',');
}

void judge_list(const char *data, std::size_t size, const char *name) {
    SIP_LIST_WALK list{};
    while (SIP_Walk_List(data, size, name, SIP_NAME_ANY_FORM, &list) == 1) {
        const SIP_SLICE &value = list.header.value;
        demand(list.item.at >= value.at && list.item.at + list.item.length <= value.at + value.length,
               "an item is in its header");
        demand(list.item.length != 0, "an item is not empty");
    }
}

bool add_start_line(const SIP_START_LINE &start, std::string_view data, Rebuilt &message) {
    const auto part = [data](const SIP_SLICE &slice) { return data.substr(slice.at, slice.length); };
    const bool is_request = start.method.length != 0;
    char status[16];
    std::snprintf(status, sizeof status, "SIP/2.0 %03d ", start.status);
    message.add(is_request ? part(start.method) : std::string_view(status));
    message.add(is_request ? std::string_view(" ") : part(start.reason));
    message.add(part(start.uri));
    message.add(is_request ? " SIP/2.0\r\n" : "\r\n");
    return is_request || (start.status != 0 && is_plain(part(start.reason)));
}

} // namespace

void judge_walk(std::string_view text, int outcome, const SIP_CODE_MSG &record) {
    static Arena pages(longest_input);
    const char *const bytes = pages.copy(text, side_for(text.size()));
    const std::string_view data(bytes, text.size());
    SIP_START_LINE start;
    const int refusal = outcome <= SIP_DECODE_NO_START_LINE && outcome >= SIP_DECODE_BAD_PROTOCOL ? outcome : 1;
    demand(SIP_Read_Start_Line(bytes, data.size(), &start) == refusal, "the start line is refused as by the decoder");
    if (refusal != SIP_DECODE_DONE)
        return;

    Rebuilt message;
    bool is_comparable = add_start_line(start, data, message);
    SIP_HEADER_WALK walk{};
    while (SIP_Walk_Headers(bytes, data.size(), &walk) == 1) {
        const std::size_t end = walk.value.at + walk.value.length;
        const std::string_view line = data.substr(walk.name.at, end - walk.name.at);
        is_comparable &= is_plain(line);
        message.add(line);
        message.add("\r\n");
    }
    SIP_SLICE body;
    SIP_Find_Body(bytes, data.size(), &body);
    const std::string_view content = data.substr(body.at, body.length);
    is_comparable &= walk.line < 63 && !content.starts_with('\n');
    message.add("\r\n");
    message.add(content);
    for (const char *const name : {"Contact", "Supported", "Via"})
        judge_list(bytes, data.size(), name);
    pages.demand_intact();
    if (!is_comparable || !message.fits)
        return;
    static SIP_CODE_MSG again;
    std::memset(static_cast<void *>(&again), 0, sizeof again);
    Sip_Decode(message.terminated(), &again);
    demand_equal(record, again, "the decoder reads the same in what the walk finds");
}

} // namespace fuzz
