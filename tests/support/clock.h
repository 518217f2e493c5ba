// The clock of the process, set by a test. time() does not advance while one of these exists.
#pragma once

#include <ctime>

namespace support {

class Clock {
  public:
    explicit Clock(std::time_t now);
    Clock(const Clock &) = delete;
    Clock &operator=(const Clock &) = delete;
    ~Clock();

    void set(std::time_t now);
};

} // namespace support
