// What tells calls apart: the start line and a few headers of a message, read without decoding it. A message that the
// codec refuses can be read as well.
#pragma once

#include <string>
#include <string_view>

// Views into the text of the message, which must outlive them.
struct MessageFacts {
    int status = 0;          // 0 for a request
    std::string_view reason; // of a response
    std::string_view method; // of a request, or in the CSeq of a response
    std::string_view uri;    // of a request
    std::string_view call_id;
    std::string_view from; // whole values
    std::string_view to;
    std::string_view from_tag; // empty if there is none
    std::string_view to_tag;
    std::string_view branch; // of the first Via
    unsigned long cseq = 0;
    bool names_others = false; // has a header that other_users reads

    bool is_request() const { return status == 0; }
};

// Returns false if the message has no usable start line, no Call-ID or no CSeq.
bool read_facts(std::string_view message, MessageFacts &facts);

// Returns false for most messages that have no session description, in less time than their decoding takes.
bool may_have_session(std::string_view message);

// User of the URI in a header value or request line: "1001" of "<sip:1001@192.0.2.1>;tag=1". The host if there is none.
std::string_view user_of(std::string_view value);

// Users of the headers that name a called party otherwise, P-Called-Party-ID and History-Info, separated by blanks.
std::string other_users(std::string_view message);
