// Messages that may have to be sent again, see kept_messages.h.
#include "kept_messages.h"

#include <utility>

namespace {

constexpr std::size_t capacity = 16384;
constexpr std::chrono::seconds lifetime{32}; // 64 times T1: no repetition comes later (RFC 3261 section 17.2.2)

} // namespace

void KeptMessages::keep(const std::string &name, std::string message) {
    const auto now = Clock::now();
    while (!turns_.empty() && (turns_.size() == capacity || turns_.front().until <= now)) {
        messages_.erase(turns_.front().name);
        turns_.pop_front();
    }
    if (messages_.insert_or_assign(name, std::move(message)).second)
        turns_.push_back({name, now + lifetime});
}

const std::string *KeptMessages::find(const std::string &name) const {
    const auto found = messages_.find(name);
    return found != messages_.end() ? &found->second : nullptr;
}
