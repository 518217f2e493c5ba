#include "judge_encode.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <string_view>

#include <sipcode/encode.h>
#include <sipcode/safe.h>

#include "judge.h"
#include "survival.h"

namespace fuzz {
namespace {

struct Encoder {
    int (*plain)(char *buffer, SIP_CODE_MSG *record);
    int (*bounded)(char *buffer, std::size_t size, SIP_CODE_MSG *record);
    std::size_t size;
    std::string_view changed[4]; // members that it may change
};

constexpr Encoder encoders[] = {
    {SIP_Encode_Message_Reuqest, SIP_Encode_Request_Buffer, SIP_REQUEST_SIZE, {"callid", "sdp.rtpmap"}},
    {SIP_Encode_Message_Response,
     SIP_Encode_Response_Buffer,
     SIP_RESPONSE_SIZE,
     {"callid", "sdp.rtpmap", "to.tag_use", "via1.addr.port"}},
};

constexpr std::size_t most = SIP_REQUEST_SIZE;

bool is_method(int method) { return method > SIP_REQUEST_MSG_UNKNOWN && method < SIP_CODE_METHOD_COUNT; }

// A record and a text to be written, between unreadable pages.
class Desk {
  public:
    SIP_CODE_MSG &lay_out(const SIP_CODE_MSG &given, std::size_t room, unsigned char byte) {
        const Arena::Side side = side_for(byte);
        record = new (record_pages.fill(sizeof(SIP_CODE_MSG), 0, side)) SIP_CODE_MSG(given);
        text = text_pages.fill(room, byte, side);
        before = byte;
        size = room;
        return *record;
    }

    void demand_intact() const {
        record_pages.demand_intact();
        text_pages.demand_intact();
    }
    bool is_untouched() const {
        return std::all_of(text, text + size, [this](char c) { return c == static_cast<char>(before); });
    }

    SIP_CODE_MSG *record = nullptr;
    char *text = nullptr;
    std::size_t size = 0;

  private:
    Arena record_pages{sizeof(SIP_CODE_MSG)};
    Arena text_pages{most};
    unsigned char before = 0;
};

void demand_changes_within(const Encoder &encoder, const SIP_CODE_MSG &given, const SIP_CODE_MSG &left) {
    for (const Leaf &leaf : leaves()) {
        const auto covers = [&leaf](std::string_view member) { return !member.empty() && is_within(member, leaf); };
        if (!equal(leaf, given, left) && std::none_of(std::begin(encoder.changed), std::end(encoder.changed), covers))
            demand_equal_within(leaf.path, given, left, "an encoder changes only what it says");
    }
}

// The text that the plain encoder writes, empty when it refuses the record; after is what it leaves of that.
std::string_view judge_plain(const Encoder &encoder, const SIP_CODE_MSG &given, unsigned char before,
                             SIP_CODE_MSG &after) {
    static Desk desk;
    SIP_CODE_MSG &record = desk.lay_out(given, encoder.size, before);
    const int result = encoder.plain(desk.text, &record);
    desk.demand_intact();
    demand_changes_within(encoder, given, record);
    after = record;
    demand(result == (is_method(given.method) ? 1 : -1), "the method alone refuses a record");
    if (result != 1) {
        demand(desk.is_untouched(), "nothing is written for a refused record");
        return {};
    }
    const std::size_t length = strnlen(desk.text, encoder.size);
    demand(length < encoder.size, "a message ends in its buffer");
    return {desk.text, length};
}

// What the bounded encoder makes of a record that the plain one writes as this text.
int judge_bounded(const Encoder &encoder, const SIP_CODE_MSG &given, std::size_t room, std::string_view text,
                  const SIP_CODE_MSG &after) {
    static Desk desk;
    SIP_CODE_MSG &record = desk.lay_out(given, room, room % 2 == 0 ? 0xA5 : 0);
    const int result = encoder.bounded(desk.text, room, &record);
    desk.demand_intact();
    if (result < 0) {
        demand(result <= SIP_ENCODE_BAD_METHOD && result >= SIP_ENCODE_BROKEN_TEXT, "a refusal that is listed");
        demand((result == SIP_ENCODE_BAD_METHOD) == !is_method(given.method), "a method is in the table or the reason");
        demand(room > 0 ? desk.text[0] == '\0' : result == SIP_ENCODE_NO_ROOM || result == SIP_ENCODE_BAD_METHOD,
               "a refused record has an empty text, where there is room for one");
        demand(std::memcmp(&given, &record, sizeof record) == 0, "a refused record is as it was");
        return result;
    }
    const auto length = static_cast<std::size_t>(result);
    demand(length < room, "what is written fits");
    demand(text == std::string_view(desk.text, length) && desk.text[length] == '\0',
           "both encoders write the same bytes");
    demand_equal(after, record, "both encoders leave the same record");
    return result;
}

// One message, as long as its Content-Length says.
void judge_frame(std::string_view text) {
    std::size_t length = 0;
    const int outcome = SIP_Frame_Stream(text.data(), text.size(), &length);
    if (text.size() <= SIP_LONGEST_MESSAGE)
        demand(outcome == SIP_FRAME_COMPLETE && length == text.size(), "what is written is one message");
    else
        demand(outcome == SIP_FRAME_LONG_HEADERS || (outcome == SIP_FRAME_LONG_MESSAGE && length == text.size()),
               "what is written is one message, too long to be read");
}

} // namespace

void judge_encoding(Kind kind, const SIP_CODE_MSG &record) {
    static char buffer[most];
    static SIP_CODE_MSG after;
    static SIP_CODE_MSG again;
    const Encoder &encoder = encoders[kind == Kind::request ? 0 : 1];
    const std::string_view text(buffer, judge_plain(encoder, record, 0xA5, after).copy(buffer, most));
    demand(text == judge_plain(encoder, without_hidden_bytes(record), 0, again),
           "what is written depends on the members alone");

    const int result = judge_bounded(encoder, record, encoder.size, text, after);
    if (result < 0) {
        demand(result != SIP_ENCODE_NO_ROOM, "the stated size is enough");
        judge_bounded(encoder, record, 0, text, after);
        return;
    }
    demand(judge_bounded(encoder, record, text.size() + 1, text, after) == result, "a text fits into its own room");
    demand(judge_bounded(encoder, record, text.size(), text, after) == SIP_ENCODE_NO_ROOM, "no room, no text");
    judge_bounded(encoder, record, 0, text, after);
    judge_bounded(encoder, without_hidden_bytes(record), encoder.size, text, after);
    judge_frame(text);
    judge_survival(kind, after, text);
}

} // namespace fuzz
