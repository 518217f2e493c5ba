// The clock of the process, set by a test: time() stands still while one of these lives.
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
