// Random records, the same for the same seed.
#pragma once

#include <random>
#include <string>

#include "code.h"

namespace support {

class RandomRecords {
  public:
    explicit RandomRecords(unsigned seed) : draw_(seed) {}

    // Every member drawn: flags mostly 0 or 1 but also 2 and -1, numbers up to their extremes, texts empty, hostile or without a
    // terminator, and where a member decides something the values that decide it. The method is 1 to 48.
    SIP_CODE_MSG next();

    // One of n.
    std::size_t below(std::size_t n) { return draw_() % n; }

  private:
    std::mt19937 draw_;
};

} // namespace support
