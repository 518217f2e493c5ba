// The codec, see codec.h. No other file of the hosts calls it to read or write messages.
#include "codec.h"

#include <algorithm>
#include <array>
#include <charconv>

#include <fmt/format.h>

#include <sipcode/encode.h>
#include <sipcode/safe.h>

#include "records.h"

namespace {

bool decode_record(std::string_view message, SIP_CODE_MSG &record) {
    return SIP_Decode_Buffer(message.data(), message.size(), &record, nullptr) == SIP_DECODE_DONE;
}

// The codec reads whole messages only, so a part gets a message around it. It is never sent.
SIP_CODE_MSG decode_part(std::string_view header_line, std::string_view body) {
    SIP_CODE_MSG record{};
    decode_record(fmt::format("ACK sip:a@a SIP/2.0\r\nVia: SIP/2.0/UDP a\r\nCall-ID: a\r\nCSeq: 1 ACK\r\n{}\r\n\r\n{}",
                              header_line, body),
                  record);
    return record;
}

// The number in "SIP/2.0 302 Moved Temporarily". The record has an identifier for some statuses only.
int status_of(std::string_view message) {
    constexpr std::size_t digits = 3;
    const std::string_view text = message.substr(std::min(message.find(' '), message.size()));
    int status = 0;
    if (text.size() > digits)
        std::from_chars(text.data() + 1, text.data() + 1 + digits, status);
    return status;
}

} // namespace

bool decode(std::string_view message, Received &received) {
    if (!decode_record(message, received))
        return false;
    received.status = is_method(received.method) ? 0 : status_of(message);
    return true;
}

bool decode_session(std::string_view description, SIP_SDP &sdp) {
    sdp = decode_part("Content-Type: application/sdp", description).sdp;
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
