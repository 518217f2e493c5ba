// Reassembles IP fragments, see fragments.h.
#include "fragments.h"

#include <algorithm>
#include <utility>

namespace {

// Packets that may be incomplete at a time. Fragments come close together in a capture, so an old packet has lost some.
constexpr std::size_t most_pending = 256;

} // namespace

std::optional<std::vector<std::uint8_t>> Fragments::add(Fragment fragment) {
    const Key key{std::move(fragment.source), std::move(fragment.destination), fragment.id, fragment.protocol};
    const auto [found, is_new] = pending_.try_emplace(key);
    Pending &packet = found->second;
    if (is_new)
        packet.age = begun_++;
    if (!fragment.more)
        packet.length = fragment.offset + fragment.payload.size();
    packet.data.process_payload(static_cast<std::uint32_t>(fragment.offset), std::move(fragment.payload));

    std::vector<std::uint8_t> &payload = packet.data.payload();
    if (packet.length && payload.size() >= *packet.length) {
        std::optional<std::vector<std::uint8_t>> whole(std::move(payload));
        whole->resize(*packet.length);
        pending_.erase(found);
        return whole;
    }
    if (pending_.size() > most_pending)
        forget_oldest();
    return std::nullopt;
}

void Fragments::forget_oldest() {
    pending_.erase(std::min_element(pending_.begin(), pending_.end(),
                                    [](const auto &a, const auto &b) { return a.second.age < b.second.age; }));
    ++given_up_;
}
