// Prints what a check finds on standard output: for a reader, or as one JSON object for each finding.
#pragma once

#include <string>
#include <string_view>

#include "message_check.h"
#include "message_reader.h"
#include "record_json.h"

// The text with one visible character for each byte.
std::string visible(std::string_view text);

class FindingPrinter {
  public:
    explicit FindingPrinter(bool as_json) : as_json_(as_json) {}

    void print(std::string_view file, const ReceivedMessage &message, const Finding &finding);

  private:
    bool as_json_;
    rapidjson::StringBuffer json_;
};
