// The three peers.
#pragma once

#include <string>
#include <vector>

#include "facts.h"

namespace interop {

PeerMessage read_with_osip(const std::string &text);

PeerMessage read_with_sofia(const std::string &text);

// All messages in one capture and one run of tshark, in their order.
std::vector<PeerMessage> read_with_tshark(const std::vector<std::string> &texts);

} // namespace interop
