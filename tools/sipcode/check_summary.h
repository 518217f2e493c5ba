// What the records lose of all messages of a run: counts by kind and subject, in a memory of bounded size.
//
//   503384 messages: 193372 lose nothing (38.4 %), 310000 lose something, 12 refused
//   refused, by reason
//          12  no Via  packet 1704
//   values cut, by member
//         120  to.user  packet 88: the longest has 45 characters, 31 are kept
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "message_check.h"
#include "message_reader.h"

class CheckSummary {
  public:
    // The findings of one message.
    void add(std::string_view file, const ReceivedMessage &message, std::span<const Finding> findings);

    // Prints it on standard output, for a reader or as one JSON object.
    void print_text() const;
    void print_json() const;

  private:
    struct Example {
        std::string file;
        std::size_t number; // of a packet, or of a line
        bool is_packet;
    };
    struct Tally {
        std::size_t count = 0;
        std::size_t longest = 0; // of the values that were cut
        std::size_t kept = 0;    // most characters that were
        Example example;         // the first; of a cut, the longest
    };
    // Header names are the same in any letter case.
    struct IgnoringCase {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const;
    };
    using Tallies = std::map<std::string, Tally, IgnoringCase>;
    using Entry = Tallies::value_type;

    Tally &tally_of(const Finding &finding);
    static std::vector<const Entry *> by_count(const Tallies &tallies);
    void print_section(std::string_view title, const Tallies &tallies) const;
    std::string example_text(const Example &example) const;

    std::array<Tallies, loss_count> tallies_;
    std::size_t messages_ = 0;
    std::size_t lossless_ = 0;
    std::size_t refused_ = 0;
    std::string file_; // the first
    bool has_several_files_ = false;
};
