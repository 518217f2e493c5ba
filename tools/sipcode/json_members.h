// Writes the members of a JSON object.
#pragma once

#include <cstdint>
#include <string_view>

#include "record_json.h"

class JsonMembers {
  public:
    explicit JsonMembers(sipcode::JsonWriter &out) : out_(out) {}

    void key(std::string_view name) { out_.Key(name.data(), static_cast<rapidjson::SizeType>(name.size())); }
    void text(std::string_view name, std::string_view value) {
        key(name);
        sipcode::write_text(out_, value);
    }
    void number(std::string_view name, std::uint64_t value) {
        key(name);
        out_.Uint64(value);
    }
    void flag(std::string_view name, bool value) {
        key(name);
        out_.Bool(value);
    }

  private:
    sipcode::JsonWriter &out_;
};
