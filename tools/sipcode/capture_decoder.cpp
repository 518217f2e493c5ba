// Decodes the messages of a capture file, see capture_decoder.h.
#include "capture_decoder.h"

#include <map>

#include <fmt/core.h>

#include "capture_file.h"
#include "capture_messages.h"
#include "console.h"

namespace {

std::string count_of(std::size_t count, const char *singular) {
    return fmt::format("{} {}{}", count, singular, count == 1 ? "" : "s");
}

class Decoding {
  public:
    Decoding(Source &source, const std::string &filter, MessageDecoder &decoder, MessagePrinter &printer)
        : name_(source.name()), decoder_(decoder), printer_(printer), file_(source.stream(), filter),
          messages_(file_.link_type(), [this](const CapturedMessage &message) { decode(message); }), progress_(source) {
    }

    // Returns what is wrong with the file, or an empty text.
    std::string run() {
        std::string damage;
        Packet packet;
        try {
            while (file_.next(packet)) {
                ++packets_;
                messages_.add(packet);
                progress_.update(packets_, count_);
            }
        } catch (const CaptureError &error) {
            damage = error.what();
        }
        messages_.finish();
        return damage;
    }

    bool has_refused() const { return !refused_.empty(); }

    // "3 messages in 17 packets: 1 decoded, 2 refused (1 no CSeq, 1 no Via), 0 values cut; 1 malformed packet"
    std::string counts() const {
        std::string line = fmt::format("{} in {}{}", count_of(count_, "message"),
                                       packets_ == file_.packets() ? "" : fmt::format("{} of ", packets_),
                                       count_of(file_.packets(), "packet"));
        std::size_t refused_count = 0;
        std::string reasons;
        for (const auto &[reason, count] : refused_) {
            refused_count += count;
            reasons += fmt::format("{}{} {}", reasons.empty() ? "" : ", ", count, reason);
        }
        if (count_ != 0)
            line +=
                fmt::format(": {} decoded, {} refused{}, {} cut", count_ - refused_count, refused_count,
                            refused_count == 0 ? "" : fmt::format(" ({})", reasons), count_of(cut_values_, "value"));
        if (messages_.malformed() != 0)
            line += fmt::format("; {}", count_of(messages_.malformed(), "malformed packet"));
        if (messages_.incomplete() != 0)
            line += fmt::format("; {} with missing fragments", count_of(messages_.incomplete(), "packet"));
        return line;
    }

  private:
    void decode(const CapturedMessage &message) {
        const std::string place = fmt::format("{}: message {}", name_, ++count_);
        if (!message.is_whole)
            print_error(
                fmt::format("{}: note: the capture holds only its first {} characters", place, message.text.size()));
        Decoded decoded = decoder_.decode(std::string(message.text), place);
        if (!decoded.refusal.empty()) {
            print_error(fmt::format("{}: refused: {}", place, decoded.refusal));
            ++refused_[decoded.refusal];
        }
        cut_values_ += static_cast<std::size_t>(decoded.cut_values);
        printer_.print(decoded, place, &message);
    }

    std::string name_;
    MessageDecoder &decoder_;
    MessagePrinter &printer_;
    CaptureFile file_;
    CaptureMessages messages_;
    Progress progress_;
    std::size_t packets_ = 0;
    std::size_t count_ = 0;
    std::size_t cut_values_ = 0;
    std::map<std::string, std::size_t> refused_; // by reason
};

} // namespace

int decode_capture(Source &source, const std::string &filter, MessageDecoder &decoder, MessagePrinter &printer) {
    try {
        Decoding decoding(source, filter, decoder, printer);
        const std::string damage = decoding.run();
        if (!damage.empty())
            print_error(fmt::format("{}: {}", source.name(), damage));
        print_error(fmt::format("{}: {}", source.name(), decoding.counts()));
        if (!damage.empty())
            return misuse;
        return decoding.has_refused() ? refused : success;
    } catch (const CaptureError &error) {
        print_error(fmt::format("{}: {}", source.name(), error.what()));
        return misuse;
    }
}
