// Figures over many calls, in little memory.
#pragma once

#include <array>
#include <cstddef>
#include <map>

#include "call_tracker.h"

// Delays in classes that are an eighth of a power of two wide, so a percentile is at most 12.5 % too high.
class Delays {
  public:
    void add(Microseconds delay);
    std::size_t count() const { return count_; }

    // The delay that so many percent do not exceed. There must be one at least.
    Microseconds percentile(unsigned percent) const;

  private:
    static constexpr std::size_t parts = 8;
    std::array<std::size_t, 64 * parts> classes_{};
    std::size_t count_ = 0;
    Microseconds longest_ = 0;
};

class CallFigures {
  public:
    void add(const Call &call);

    std::size_t calls() const { return calls_; }
    std::size_t messages() const { return messages_; }
    std::size_t repeated() const { return repeated_; }
    std::size_t given_up = 0; // see CallTracker

    const std::map<Outcome, std::size_t> &outcomes() const { return outcomes_; }
    const std::map<int, std::size_t> &statuses() const { return statuses_; } // final ones of calls
    const std::map<Kind, std::size_t> &kinds() const { return kinds_; }

    // RFC 6076 sections 4.6, 4.3 and 4.1. The ratio is that of answered calls in all but the redirected and the
    // unauthorized ones, from 0 to 1; without any of them it is empty.
    std::optional<double> session_establishment_ratio() const;
    const Delays &session_request_delay() const { return session_delays_; }
    const Delays &registration_request_delay() const { return registration_delays_; }

  private:
    std::size_t calls_ = 0;
    std::size_t messages_ = 0;
    std::size_t repeated_ = 0;
    std::size_t established_ = 0;
    std::size_t attempts_ = 0;
    std::map<Outcome, std::size_t> outcomes_;
    std::map<int, std::size_t> statuses_;
    std::map<Kind, std::size_t> kinds_;
    Delays session_delays_;
    Delays registration_delays_;
};
