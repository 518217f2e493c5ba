// Reassembles IP fragments.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <tins/tcp_ip/data_tracker.h>

struct Fragment {
    std::string source;
    std::string destination;
    std::uint32_t id;
    std::uint8_t protocol;
    std::size_t offset; // in bytes
    bool more;          // more fragments follow
    std::vector<std::uint8_t> payload;
};

class Fragments {
  public:
    // Returns the payload of the whole packet if this was the last missing fragment.
    std::optional<std::vector<std::uint8_t>> add(Fragment fragment);

    // Packets with lost fragments.
    std::size_t incomplete() const { return given_up_ + pending_.size(); }

  private:
    struct Key {
        std::string source;
        std::string destination;
        std::uint32_t id;
        std::uint8_t protocol;
        auto operator<=>(const Key &) const = default;
    };
    struct Pending {
        Tins::TCPIP::DataTracker data{0}; // its sequence numbers are offsets
        std::optional<std::size_t> length;
        std::size_t age = 0;
    };

    void forget_oldest();

    std::map<Key, Pending> pending_;
    std::size_t begun_ = 0;
    std::size_t given_up_ = 0;
};
