// Streams and codecs of a session description that the record does not hold.
#pragma once

#include <string_view>
#include <vector>

#include "message_check.h"
#include "trial.h"

// Adds them; does nothing for a message whose body holds no session description.
void find_dropped_of_session(std::string_view message, std::size_t body, Trial &trial, std::vector<Finding> &found);
