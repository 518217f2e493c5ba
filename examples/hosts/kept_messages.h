// Messages that may have to be sent again, by what they are asked for with. Bounded in number and time: the oldest goes first.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <unordered_map>

class KeptMessages {
  public:
    // Takes the place of what was kept under this name, for the rest of its time.
    void keep(const std::string &name, std::string message);

    // Null when there is none.
    const std::string *find(const std::string &name) const;

  private:
    using Clock = std::chrono::steady_clock;

    struct Turn {
        std::string name;
        Clock::time_point until;
    };

    std::unordered_map<std::string, std::string> messages_;
    std::deque<Turn> turns_; // one for each message, from when its name was first kept
};
