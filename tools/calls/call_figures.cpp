// Figures over many calls, see call_figures.h.
#include "call_figures.h"

#include <algorithm>
#include <bit>

void Delays::add(Microseconds delay) {
    const auto value = static_cast<std::uint64_t>(std::max<Microseconds>(delay, 0));
    const auto width = static_cast<std::size_t>(std::bit_width(value));
    const std::size_t part = width < 4 ? value : (width - 3) * parts + (value >> (width - 4)) % parts;
    ++classes_[part];
    ++count_;
    longest_ = std::max(longest_, delay);
}

Microseconds Delays::percentile(unsigned percent) const {
    const std::size_t wanted = (count_ * percent + 99) / 100;
    std::size_t below = 0;
    std::size_t part = 0;
    while ((below += classes_[part]) < wanted)
        ++part;
    const std::size_t shift = part / parts;
    const auto end = shift == 0 ? part : (((part % parts) + parts + 1) << (shift - 1)) - 1;
    return std::min(static_cast<Microseconds>(end), longest_);
}

void CallFigures::add(const Call &call) {
    ++kinds_[call.kind];
    messages_ += call.messages;
    repeated_ += call.repeated;
    if (call.kind == Kind::registration && call.outcome == Outcome::answered && call.delay)
        registration_delays_.add(*call.delay);
    if (call.kind != Kind::call)
        return;
    ++calls_;
    ++outcomes_[call.outcome];
    if (call.outcome == Outcome::joined)
        return;
    if (call.status != 0)
        ++statuses_[call.status];
    if (call.delay)
        session_delays_.add(*call.delay);
    const bool counts = call.status / 100 != 3 && call.status != 401 && call.status != 402 && call.status != 407;
    attempts_ += counts ? 1 : 0;
    established_ += call.answered ? 1 : 0;
}

std::optional<double> CallFigures::session_establishment_ratio() const {
    if (attempts_ == 0)
        return std::nullopt;
    return static_cast<double>(established_) / static_cast<double>(attempts_);
}
