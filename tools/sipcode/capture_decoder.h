// The messages of a capture file through the codec.
#pragma once

#include <string>

#include "message_decoder.h"
#include "message_printer.h"
#include "message_source.h"

// Prints each message as it is read, shows progress, and ends with a line of counts on standard error. The filter is a
// BPF expression; an empty one matches every packet. Returns the exit status, which is misuse for a damaged file. The
// messages before the damage are printed.
int decode_capture(Source &source, const std::string &filter, MessageDecoder &decoder, MessagePrinter &printer);
