// Messages that make one decoder work as hard as their length allows, and the ordinary ones that they are held against.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace linear {

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

// An INVITE as phones send it, of at most length bytes and little less: header lines and session description grow together.
std::string plain_message(std::size_t length);

} // namespace linear
