// Messages that may have to be sent again, by a key. They are bounded in number and time; the oldest is dropped first.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <unordered_map>

class KeptMessages {
  public:
    // Replaces what was kept under this key, for the rest of its time.
    void keep(const std::string &name, std::string message);

    // Null if there is none.
    const std::string *find(const std::string &name) const;

  private:
    using Clock = std::chrono::steady_clock;

    struct Turn {
        std::string name;
        Clock::time_point until;
    };

    std::unordered_map<std::string, std::string> messages_;
    std::deque<Turn> turns_; // one for each message, from when its key was first kept
};
