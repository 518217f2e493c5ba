// Prints decoded messages on standard output: as members, as JSON, as trace lines, or as they were received.
#pragma once

#include <string>

#include "capture_messages.h"
#include "message_decoder.h"
#include "message_writer.h"
#include "record_json.h"

enum class Form { members, json, dump, raw };

class MessagePrinter {
  public:
    MessagePrinter(Form form, sipcode::Scope scope) : form_(form), scope_(scope) {}

    // place comes before the members; origin is null for a message that is not from a capture.
    void print(Decoded &decoded, std::string_view place, const CapturedMessage *origin);

  private:
    void print_dump(SIP_CODE_MSG &record);
    void print_json(const Decoded &decoded, const CapturedMessage *origin);
    void print_members(const Decoded &decoded, std::string_view place, const CapturedMessage *origin) const;

    Form form_;
    sipcode::Scope scope_;
    bool is_first_ = true;
    rapidjson::StringBuffer json_;
    MessageText text_;
};
