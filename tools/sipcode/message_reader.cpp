// Reads the messages of a file, see message_reader.h.
#include "message_reader.h"

#include <algorithm>
#include <utility>

#include <fmt/compile.h>

#include "capture_file.h"
#include "console.h"
#include "message_source.h"

namespace {

class CaptureReading {
  public:
    CaptureReading(Source &source, const std::string &filter, TakeMessage take)
        : name_(source.name()), take_(std::move(take)), file_(source.stream(), filter),
          messages_(file_.link_type(), [this](const CapturedMessage &message) { give(message); }), progress_(source) {}

    // Returns what is wrong with the file, or an empty text.
    std::string run() {
        std::string damage;
        Packet packet;
        try {
            while (!is_interrupted() && file_.next(packet)) {
                ++packets_;
                messages_.add(packet);
                progress_.update(packets_, count_);
            }
        } catch (const CaptureError &error) {
            if (!is_interrupted())
                damage = error.what();
        }
        messages_.finish();
        return damage;
    }

    // "3 messages in 17 packets: 1 decoded, 2 refused; malformed packets: 1"
    std::string counts(const Summary &summary) const {
        std::string line = fmt::format("{} in {}{}", count_of(count_, "message"),
                                       packets_ == file_.packets() ? "" : fmt::format("{} of ", packets_),
                                       count_of(file_.packets(), "packet"));
        const std::string summed_up = count_ == 0 ? "" : summary();
        if (!summed_up.empty())
            line += ": " + summed_up;
        for (const auto &[what, count] : messages_.not_read()) {
            if (count != 0)
                line += fmt::format("; {}: {}", what, count);
        }
        return line;
    }

  private:
    void give(const CapturedMessage &message) {
        const std::string place = fmt::format(FMT_COMPILE("{}: message {}"), name_, ++count_);
        take_({message.text, place, &message, 1});
    }

    std::string name_;
    TakeMessage take_;
    CaptureFile file_;
    CaptureMessages messages_;
    Progress progress_;
    std::size_t packets_ = 0;
    std::size_t count_ = 0;
};

int read_capture(Source &source, const std::string &filter, const TakeMessage &take, const Summary &summary) {
    try {
        CaptureReading reading(source, filter, [&take](const ReceivedMessage &message) {
            if (!message.origin->is_whole)
                print_error(fmt::format("{}: note: the capture holds only its first {} characters", message.place,
                                        message.text.size()));
            take(message);
        });
        const std::string damage = reading.run();
        if (!damage.empty())
            print_error(fmt::format("{}: {}", source.name(), damage));
        print_error(fmt::format("{}: {}", source.name(), reading.counts(summary)));
        if (is_interrupted())
            return interrupted;
        return damage.empty() ? success : misuse;
    } catch (const CaptureError &error) {
        print_error(fmt::format("{}: {}", source.name(), error.what()));
        return misuse;
    }
}

void read_text(Source &source, const TakeMessage &take) {
    const std::string content = source.read_all();
    const char *counted = content.data();
    std::size_t line = 1;
    int number = 0;
    for (const std::string_view text : split_messages(content)) {
        line += static_cast<std::size_t>(std::count(counted, text.data(), '\n'));
        counted = text.data();
        take({text, fmt::format("{}: message {}", source.name(), ++number), nullptr, line});
    }
}

// Why the choice does not apply to the file; empty if it does.
std::string_view why_not(const Source &source, const std::string &file, const Choice &choice) {
    if (!source.is_capture() && !choice.filter.empty())
        return "not a capture, so --filter does not apply";
    if (!source.is_capture() && choice.needs_calls())
        return "not a capture, so calls are chosen by --call-id only";
    if (choice.needs_calls() && !can_be_read_twice(file))
        return "it can be read only once, so calls are chosen by --call-id only";
    return "";
}

// Returns what is wrong with the file, or an empty text.
std::string read_quietly(const std::string &file, const std::string &filter, const TakeCaptured &take) {
    Source source(file);
    if (!source.is_capture())
        throw CaptureError("not a capture");
    return CaptureReading(source, filter, [&take](const ReceivedMessage &message) { take(*message.origin); }).run();
}

} // namespace

int read_messages(const std::string &file, const Choice &choice, const TakeMessage &take, const Summary &summary) {
    const CatchInterrupt interrupt;
    Source source(file);
    if (const std::string_view reason = why_not(source, file, choice); !reason.empty()) {
        print_error(fmt::format("{}: {}", source.name(), reason));
        return misuse;
    }
    CallIds chosen(choice.call_ids.begin(), choice.call_ids.end());
    if (choice.needs_calls()) {
        chosen.clear();
        track_calls(file, choice, [&chosen](const Call &call) { chosen.insert(call.call_id); });
    }
    const TakeMessage take_chosen = [&](const ReceivedMessage &message) {
        if (choice.is_every_call() || is_chosen(message.text, chosen))
            take(message);
    };
    if (source.is_capture())
        return read_capture(source, choice.filter, take_chosen, summary);
    read_text(source, take_chosen);
    return success;
}

void take_messages(const std::string &file, const std::string &filter, const TakeCaptured &take) {
    const std::string damage = read_quietly(file, filter, take);
    if (!damage.empty())
        print_error(fmt::format("{}: {}", file, damage));
}

void track_calls(const std::string &file, const Choice &choice, const CallTracker::Report &report) {
    CallTracker tracker([&](const Call &call) {
        if (choice.matches(call))
            report(call);
    });
    read_quietly(file, choice.filter, [&tracker](const CapturedMessage &message) {
        MessageFacts facts;
        if (read_facts(message.text, facts))
            tracker.add(message, facts);
    });
    tracker.finish();
}
