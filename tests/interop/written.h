// Messages that the encoders wrote, with the records that they wrote them from.
#pragma once

#include <string>
#include <vector>

#include "code.h"

namespace interop {

struct Written {
    std::string name; // for a reader of a failure
    bool is_request;
    SIP_CODE_MSG record; // as it was before it was written
    std::string text;

    // "INVITE", or for a response "200 OK to INVITE".
    std::string kind() const;
};

// The sample records, the answers to the sample messages with every status, and a thousand random records.
std::vector<Written> written_messages();

} // namespace interop
