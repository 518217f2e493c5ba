// Random records, the same for the same seed.
#pragma once

#include <random>
#include <string>

#include "code.h"

namespace support {

class RandomRecords {
  public:
    explicit RandomRecords(unsigned seed) : draw_(seed) {}

    // Draws every member: flags mostly 0 or 1 but also 2 and -1, numbers up to their extremes, texts that are empty,
    // hostile or unterminated. Members that decide something often get a deciding value. The method is 1 to 48.
    SIP_CODE_MSG next();

    // One of n.
    std::size_t below(std::size_t n) { return draw_() % n; }

  private:
    std::mt19937 draw_;
};

} // namespace support
