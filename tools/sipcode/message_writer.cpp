// Records as messages on standard output, see message_writer.h.
#include "message_writer.h"

#include <algorithm>
#include <iostream>
#include <string_view>

#include "encode.h"
#include "library_prints.h"

namespace {

bool encode(char *buffer, SIP_CODE_MSG &record) {
    const DiscardLibraryPrints discard;
    const bool is_response = record.method >= SIP_RESPONSE_MSG_100_TRY;
    return (is_response ? SIP_Encode_Message_Response : SIP_Encode_Message_Reuqest)(buffer, &record) == 1;
}

} // namespace

bool MessageWriter::write(SIP_CODE_MSG record) {
    char buffer[std::max(SIP_REQUEST_SIZE, SIP_RESPONSE_SIZE)];
    if (!encode(buffer, record))
        return false;
    if (!is_first_)
        std::cout << (line_is_open_ ? "\n----\n" : "----\n");
    const std::string_view message(buffer);
    std::cout << message;
    is_first_ = false;
    line_is_open_ = !message.ends_with('\n');
    return true;
}
