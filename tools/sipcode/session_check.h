// Streams and codecs of a session description that the record loses.
#pragma once

#include <string_view>
#include <vector>

#include "message_check.h"
#include "trial.h"

// Adds them to found. Does nothing for a message without a session description.
void find_dropped_of_session(std::string_view message, Trial &trial, std::vector<Finding> &found);
