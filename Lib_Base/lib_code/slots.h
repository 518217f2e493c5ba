// Perfect hashing of a few constant keys: one multiplication finds the only key that a given one can equal.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sipcode {

class key_slots {
  public:
    // The compiler looks for a factor by which no two different keys share a slot. Equal keys share that of their first.
    // Unused slots name the first key of all.
    template <std::size_t N>
    consteval explicit key_slots(const std::array<std::uint32_t, N> &keys) {
        while (!place(keys))
            factor += 0x6D2B79F6U;
    }

    // Number of the key, or of another one if it is none of the keys.
    constexpr std::uint8_t candidate(std::uint32_t key) const { return number_of[slot_of(key)]; }

  private:
    static constexpr std::size_t count = 256;

    constexpr std::size_t slot_of(std::uint32_t key) const { return key * factor >> 24; }

    template <std::size_t N>
    consteval bool place(const std::array<std::uint32_t, N> &keys) {
        bool taken[count] = {};
        for (std::size_t i = 0; i < N; ++i) {
            const std::size_t slot = slot_of(keys[i]);
            if (taken[slot] && keys[number_of[slot]] != keys[i])
                return false;
            if (!taken[slot])
                number_of[slot] = static_cast<std::uint8_t>(i);
            taken[slot] = true;
        }
        return true;
    }

    std::uint32_t factor = 0x9E3779B1U;
    std::uint8_t number_of[count] = {};
};

} // namespace sipcode
