// Where in a capture a message came from, for a reader and as JSON.
#pragma once

#include <string>
#include <string_view>

#include "capture_messages.h"
#include "record_json.h"

// "packet 1, 2026-11-23T10:00:00.000000Z, UDP 192.0.2.2:5060 > 198.51.100.7:5070"
std::string origin_text(const CapturedMessage &origin);

// An object with "address" and "port", as a member of this name.
void write_endpoint(sipcode::JsonWriter &out, std::string_view name, const Endpoint &endpoint);

// "packet", "time", "transport", "source", "destination" and "whole", into an object that the caller begins and ends.
void write_origin(sipcode::JsonWriter &out, const CapturedMessage &origin);
