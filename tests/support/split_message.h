// A split message as a host makes it, of header lines only. Each line ends at an unreadable page.
#pragma once

#include <string>
#include <vector>

#include <sipcode/decode.h>

#include "support/guarded.h"

namespace support {

class SplitMessage {
  public:
    // At most 64 lines. The entries after them are invalid.
    explicit SplitMessage(const std::vector<std::string> &header) : storage_(sizeof(SIP_MSG), 0xA5) {
        SIP_MSG &split = message();
        for (std::size_t i = 0; i < header.size(); ++i)
            split.header[i] = lines_.emplace_back(header[i]).data();
        split.headers = static_cast<int>(header.size());
        split.lines = 0;
        split.content[0] = '\0';
    }

    SIP_MSG &message() { return storage_.as<SIP_MSG>(); }

  private:
    Guarded storage_;
    std::vector<Guarded> lines_;
};

} // namespace support
