// The codec, see codec.h. No other file of the hosts calls it to read or write messages.
#include "codec.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include <sipcode/encode.h>
#include <sipcode/safe.h>

#include "records.h"

namespace {

bool decode_record(std::string_view message, SIP_CODE_MSG &record) {
    return SIP_Decode_Buffer(message.data(), message.size(), &record, nullptr) == SIP_DECODE_DONE;
}

// The codec reads whole messages only, so a part gets a message around it. It is never sent.
SIP_CODE_MSG decode_part(std::string_view method, std::string_view headers, std::string_view body) {
    SIP_CODE_MSG record{};
    decode_record(
        fmt::format("{0} sip:a@a SIP/2.0\r\nVia: SIP/2.0/UDP a;branch=a\r\nFrom: <sip:a@a>\r\nTo: <sip:a@a>\r\n"
                    "Call-ID: a\r\nCSeq: 1 {0}\r\n{1}\r\n\r\n{2}",
                    method, headers, body),
        record);
    return record;
}

// The record has an identifier for some statuses only.
int status_of(std::string_view message) {
    SIP_START_LINE start;
    SIP_Read_Start_Line(message.data(), message.size(), &start);
    return start.status;
}

// The record holds the first line of a list and no more than 62 characters of it.
std::string list(std::string_view message, const char *header) {
    std::string items;
    SIP_LIST_WALK walk{};
    while (SIP_Walk_List(message.data(), message.size(), header, SIP_NAME_ANY_FORM, &walk) == 1)
        items.append(items.empty() ? "" : ",").append(message.substr(walk.item.at, walk.item.length));
    return items;
}

// The codec reads Refer-To only beside a Referred-By, which many phones do not send.
void read_refer_to(std::string_view message, REFER_INFO &refer_to) {
    SIP_SLICE value;
    if (SIP_Find_Header(message.data(), message.size(), "Refer-To", SIP_NAME_ANY_FORM, 0, &value) != 1)
        return;
    const std::string headers =
        fmt::format("Refer-To: {}\r\nReferred-By: <sip:a@a>", message.substr(value.at, value.length));
    refer_to = decode_part("REFER", headers, "").refer_to;
}

} // namespace

bool decode(std::string_view message, Received &received) {
    if (!decode_record(message, received))
        return false;
    received.status = is_method(received.method) ? 0 : status_of(message);
    received.supported_tags = list(message, "Supported");
    received.required_tags = list(message, "Require");
    if (received.method == SIP_REQUEST_MSG_REFER && received.refer_to.use != 1)
        read_refer_to(message, received.refer_to);
    return true;
}

bool decode_session(std::string_view description, SIP_SDP &sdp) {
    sdp = decode_part("ACK", "Content-Type: application/sdp", description).sdp;
    return sdp.a_use == 1 || sdp.v_use == 1;
}

std::string encode(SIP_CODE_MSG &record) {
    std::array<char, std::max(SIP_REQUEST_SIZE, SIP_RESPONSE_SIZE)> text;
    const bool is_request = record.method < SIP_RESPONSE_MSG_100_TRY;
    const int length = is_request ? SIP_Encode_Request_Buffer(text.data(), text.size(), &record)
                                  : SIP_Encode_Response_Buffer(text.data(), text.size(), &record);
    return length > 0 ? std::string(text.data(), static_cast<std::size_t>(length)) : std::string();
}

Frame frame(std::string_view stream) {
    Frame found{Framing::broken, 0};
    switch (SIP_Frame_Stream(stream.data(), stream.size(), &found.length)) {
    case SIP_FRAME_KEEP_ALIVE:
        found.what = Framing::keep_alive;
        break;
    case SIP_FRAME_COMPLETE:
        found.what = Framing::message;
        break;
    case SIP_FRAME_MORE:
        found.what = Framing::incomplete;
        break;
    default: // a message that is too long could be skipped, but its sender would wait in vain
        break;
    }
    return found;
}
