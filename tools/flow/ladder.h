// The ladder of a call: who takes part, and the arrows between them. It is drawn by ladder_text and ladder_svg.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "call_tracker.h"
#include "capture_messages.h"

// A message with everything that it needs to outlive the capture.
struct FlowMessage {
    explicit FlowMessage(const CapturedMessage &message)
        : mark(message.mark), transport(message.transport), source(message.source), destination(message.destination),
          text(message.text) {}

    PacketMark mark;
    Transport transport;
    Endpoint source;
    Endpoint destination;
    std::string text;
};

struct Arrow {
    std::size_t from; // columns; equal if a host sends to itself
    std::size_t to;
    Microseconds time;       // from the first message
    Microseconds since_last; // message
    int status;              // 0 for a request
    std::string label;       // "INVITE", "180 Ringing"
    std::string cseq;        // "1 INVITE"
    std::string session;     // "audio PCMA telephone-event sendonly"; empty if there is none
    bool is_repeated;        // it came before
    bool is_late;            // its request had been given up by then (RFC 3261 timers B and F)
};

struct Ladder {
    std::vector<std::string> columns; // "192.0.2.1:5060", in the order of appearance
    std::vector<Arrow> arrows;
};

Ladder make_ladder(const std::vector<FlowMessage> &messages);

// Lines for a terminal. Plain is ASCII without colour.
enum class Drawing { plain, lines, coloured };
std::string draw_text(const Ladder &ladder, const std::vector<FlowMessage> &messages, Drawing drawing);

// An SVG element. Its arrows are groups of class "message" whose data-message is their number.
std::string draw_svg(const Ladder &ladder, const std::vector<FlowMessage> &messages);

// The text with the characters that are markup replaced.
std::string escape_markup(std::string_view text);

// "10:00:02.480"
std::string clock_text(const PacketMark &mark);

// The page: calls, ladders, messages with the codec's reading and its findings. The messages of a call are those with
// its Call-ID. The note comes below the list of calls.
struct FlowCall {
    Call call;
    std::vector<FlowMessage> messages;
};
std::string draw_page(const std::vector<FlowCall> &calls, std::string_view note);
