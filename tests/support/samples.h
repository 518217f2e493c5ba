// The messages of the examples, and kinds that they have not.
#pragma once

#include <string>
#include <vector>

namespace support {

struct Sample {
    std::string title;
    std::string text;
};

const std::vector<Sample> &samples();

} // namespace support
