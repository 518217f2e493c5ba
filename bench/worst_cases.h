// Messages that make one decoder do as much work as their length allows.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace bench {

// One unit, repeated between a beginning and an end.
struct WorstCase {
    std::string_view name; // "header: what is repeated"
    std::string_view before;
    std::string_view unit;
    std::string_view after;

    // At most length bytes, and at least all but one unit of them.
    std::string message(std::size_t length) const;
};

std::span<const WorstCase> worst_cases();

} // namespace bench
