// Prints decoded messages on standard output: as members, as JSON, or as trace lines.
#pragma once

#include <string>

#include "capture_messages.h"
#include "message_decoder.h"
#include "record.h"

enum class Form { members, json, dump };

class MessagePrinter {
  public:
    MessagePrinter(Form form, sipcode::Scope scope) : form_(form), scope_(scope) {}

    // place comes before the members; origin is null for a message that is not from a capture.
    void print(Decoded &decoded, const std::string &place, const CapturedMessage *origin);

  private:
    void print_dump(SIP_CODE_MSG &record);
    void print_json(const Decoded &decoded, const CapturedMessage *origin) const;
    void print_members(const Decoded &decoded, const std::string &place, const CapturedMessage *origin) const;

    Form form_;
    sipcode::Scope scope_;
    bool is_first_ = true;
};
