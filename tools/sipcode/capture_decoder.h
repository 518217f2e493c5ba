// The messages of a capture file through the codec.
#pragma once

#include <string>

#include "message_decoder.h"
#include "message_printer.h"
#include "message_source.h"

// Prints each message as it comes, shows progress, and ends with a line of counts on standard error. The filter is a BPF
// expression; an empty one takes every packet. Returns the exit status, misuse for a file that is damaged: what stands in
// front of the damage is printed.
int decode_capture(Source &source, const std::string &filter, MessageDecoder &decoder, MessagePrinter &printer);
