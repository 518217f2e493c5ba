// Writes records as messages on standard output, see message_writer.h.
#include "message_writer.h"

#include <algorithm>
#include <iostream>
#include <string_view>

#include <fmt/format.h>

#include "encode.h"
#include "safe.h"

namespace {

std::string reason(int error, const SIP_CODE_MSG &record) {
    switch (error) {
    case SIP_ENCODE_BAD_METHOD:
        return fmt::format("method {} is outside 1 to 48", record.method);
    case SIP_ENCODE_NO_BODY:
        return "content.use is 1, but the record has no body that this message can carry";
    default:
        return "a text would break the message apart: it holds a line end, or a quote or bracket that ends it early";
    }
}

} // namespace

void MessageText::write(std::string_view message) {
    if (!is_first_)
        std::cout << (line_is_open_ ? "\n----\n" : "----\n");
    std::cout << message;
    is_first_ = false;
    line_is_open_ = !message.ends_with('\n');
}

std::string MessageWriter::write(SIP_CODE_MSG record) {
    char buffer[std::max(SIP_REQUEST_SIZE, SIP_RESPONSE_SIZE)];
    const bool is_response = record.method >= SIP_RESPONSE_MSG_100_TRY;
    const int length =
        (is_response ? SIP_Encode_Response_Buffer : SIP_Encode_Request_Buffer)(buffer, sizeof buffer, &record);
    if (length < 0)
        return reason(length, record);
    text_.write({buffer, static_cast<std::size_t>(length)});
    return {};
}
