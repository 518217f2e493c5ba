// Reads the messages of a file, see message_reader.h.
#include "message_reader.h"

#include <algorithm>

#include <fmt/core.h>

#include "capture_file.h"
#include "console.h"

namespace {

class CaptureReading {
  public:
    CaptureReading(Source &source, const std::string &filter, const TakeMessage &take)
        : name_(source.name()), take_(take), file_(source.stream(), filter),
          messages_(file_.link_type(), [this](const CapturedMessage &message) { give(message); }), progress_(source) {}

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

    // "3 messages in 17 packets: 1 decoded, 2 refused; 1 malformed packet"
    std::string counts(const Summary &summary) const {
        std::string line = fmt::format("{} in {}{}", count_of(count_, "message"),
                                       packets_ == file_.packets() ? "" : fmt::format("{} of ", packets_),
                                       count_of(file_.packets(), "packet"));
        if (count_ != 0)
            line += ": " + summary();
        if (messages_.malformed() != 0)
            line += fmt::format("; {}", count_of(messages_.malformed(), "malformed packet"));
        if (messages_.incomplete() != 0)
            line += fmt::format("; {} with missing fragments", count_of(messages_.incomplete(), "packet"));
        return line;
    }

  private:
    void give(const CapturedMessage &message) {
        const std::string place = fmt::format("{}: message {}", name_, ++count_);
        if (!message.is_whole)
            print_error(
                fmt::format("{}: note: the capture holds only its first {} characters", place, message.text.size()));
        take_({message.text, place, &message, 1});
    }

    std::string name_;
    const TakeMessage &take_;
    CaptureFile file_;
    CaptureMessages messages_;
    Progress progress_;
    std::size_t packets_ = 0;
    std::size_t count_ = 0;
};

int read_capture(Source &source, const std::string &filter, const TakeMessage &take, const Summary &summary) {
    try {
        CaptureReading reading(source, filter, take);
        const std::string damage = reading.run();
        if (!damage.empty())
            print_error(fmt::format("{}: {}", source.name(), damage));
        print_error(fmt::format("{}: {}", source.name(), reading.counts(summary)));
        return damage.empty() ? success : misuse;
    } catch (const CaptureError &error) {
        print_error(fmt::format("{}: {}", source.name(), error.what()));
        return misuse;
    }
}

} // namespace

int read_messages(Source &source, const std::string &filter, const TakeMessage &take, const Summary &summary) {
    if (source.is_capture())
        return read_capture(source, filter, take, summary);
    if (!filter.empty()) {
        print_error(fmt::format("{}: not a capture, so --filter does not apply", source.name()));
        return misuse;
    }
    const std::string content = source.read_all();
    const char *counted = content.data();
    std::size_t line = 1;
    int number = 0;
    for (const std::string_view text : split_messages(content)) {
        line += static_cast<std::size_t>(std::count(counted, text.data(), '\n'));
        counted = text.data();
        take({text, fmt::format("{}: message {}", source.name(), ++number), nullptr, line});
    }
    return success;
}
