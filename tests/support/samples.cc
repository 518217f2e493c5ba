#include "support/samples.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace support {

const std::vector<Sample> &samples() {
    static const std::vector<Sample> all = [] {
        std::vector<Sample> read;
        for (const char *const directory :
             {SIPCODE_TEST_DATA "/../../examples/messages", SIPCODE_TEST_DATA "/messages"})
            for (const auto &entry : std::filesystem::directory_iterator(directory)) {
                std::ifstream file(entry.path(), std::ios::binary);
                read.push_back({entry.path().stem(), {std::istreambuf_iterator<char>(file), {}}});
            }
        return read;
    }();
    return all;
}

} // namespace support
