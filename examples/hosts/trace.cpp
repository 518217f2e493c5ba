// The ladder of messages, see trace.h.
#include "trace.h"

#include <cerrno>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "records.h"

namespace {

constexpr std::string_view codec_names[SIP_CODE_CODEC_COUNT] = {
    "", "PCMA", "PCMU", "G729", "G723", "telephone-event", "GSM", "G726", "G722", "speex", "iLBC", "DVI4"};
constexpr std::string_view directions[] = {"sendrecv", "sendonly", "recvonly", "inactive"};

std::string address(const IPV4_ADDRESS &address) { return fmt::format("{}:{}", printable(address.ip), address.port); }

std::string session(const SIP_SDP &sdp) {
    std::string text = fmt::format("audio {}", address(sdp.a_addr));
    for (const e_codec codec : sdp.a_coders)
        if (codec > UNKONW && codec < SIP_CODE_CODEC_COUNT)
            text += fmt::format(" {}", codec_names[codec]);
    if (sdp.a_media >= 0 && sdp.a_media < static_cast<int>(std::size(directions)))
        text += fmt::format(" {}", directions[sdp.a_media]);
    if (sdp.v_use == 1)
        text += fmt::format(", video {} {}", address(sdp.v_addr), sdp.v_coders[0]);
    return text;
}

// Collects the notes of a message, separated by ", ".
class Details {
  public:
    template <class... Values>
    void add(fmt::format_string<Values...> format, Values &&...values) {
        text_ += text_.empty() ? "" : ", ";
        text_ += fmt::format(format, std::forward<Values>(values)...);
    }
    const std::string &text() const { return text_; }

  private:
    std::string text_;
};

void add_timers(Details &details, const SIP_CODE_MSG &record) {
    const bool tells_expiry =
        record.cseq.method == SIP_REQUEST_MSG_REGISTER || record.cseq.method == SIP_REQUEST_MSG_SUBCRIBE;
    if (tells_expiry && (is_method(record.method) || record.method == SIP_RESPONSE_MSG_200_OK))
        details.add("expires {}", record.expire.expires);
    if (record.session_expires.use == 1)
        details.add("session expires {}", record.session_expires.sessionexpires);
    if (record.min_se.use == 1)
        details.add("at least {}", record.min_se.minse);
}

void add_reliability(Details &details, const SIP_CODE_MSG &record) {
    if (record.rseq.use == 1)
        details.add("RSeq {}", record.rseq.RSeq);
    if (record.rack.rack != 0)
        details.add("RAck {} {} {}", record.rack.rack, record.rack.cseq, name_of(record.rack.method));
}

void add_authentication(Details &details, const SIP_CODE_MSG &record) {
    if (record.authen.use == 1)
        details.add("realm {}", printable(record.authen.realm));
    if (record.author.use == 1)
        details.add("credentials of {}", printable(record.author.username));
}

void add_events(Details &details, const SIP_CODE_MSG &record) {
    if (record.event.use == 1)
        details.add("event {}", printable(record.event.content));
    if (record.subscription_state.use == 1)
        details.add("{}", printable(record.subscription_state.content));
    if (record.refer_to.use == 1)
        details.add("to {}", printable(record.refer_to.refertotel));
}

void add_body(Details &details, const SIP_CODE_MSG &record) {
    if (record.sdp.a_use == 1)
        details.add("{}", session(record.sdp));
    if (record.info.use == 1)
        details.add("digit {}", printable(record.info.key));
    const std::string_view type = record.content.type;
    if (type.starts_with("application/simple-message-summary"))
        details.add("{} new, {} old", record.message_summary.newmsgcount, record.message_summary.oldmsgcount);
    else if (record.msg_sdp.use == 1)
        details.add("\"{}\"", printable(record.msg_sdp.content));
}

std::string details_of(const SIP_CODE_MSG &record) {
    Details details;
    details.add("CSeq {}", record.cseq.seq);
    if (!is_method(record.method))
        details.add("{}", name_of(record.cseq.method));
    else
        details.add("{} to {}", printable(record.from.user), printable(record.to.user));
    if (record.to.tag[0] != '\0')
        details.add("tag {}", printable(record.to.tag));
    add_authentication(details, record);
    add_timers(details, record);
    add_reliability(details, record);
    add_events(details, record);
    add_body(details, record);
    return details.text();
}

} // namespace

Output::Output() {
    const int own = dup(STDOUT_FILENO);
    const int sink = open("/dev/null", O_WRONLY | O_CLOEXEC);
    file_ = own == -1 || sink == -1 ? nullptr : fdopen(own, "w");
    if (file_ == nullptr)
        throw std::system_error(errno, std::generic_category(), "standard output");
    dup2(sink, STDOUT_FILENO);
    close(sink);
}

Output::~Output() { std::fclose(file_); }

void Output::line(std::string_view text) {
    fmt::print(file_, "{}\n", text);
    std::fflush(file_);
}

void Trace::message(Direction direction, const Peer &peer, const SIP_CODE_MSG &record, std::string_view title) {
    if (!enabled_)
        return;
    if (const std::string name = to_string(peer); name != last_peer_) {
        output_.line(fmt::format("{:<24}{:>24}", name, "this host"));
        last_peer_ = name;
    }
    constexpr int width = 38;
    const std::string arrow = direction == Direction::in ? fmt::format("{:-<{}}>", fmt::format("-- {} ", title), width)
                                                         : fmt::format("<{:-<{}}", fmt::format("- {} ", title), width);
    output_.line(fmt::format("    |{}|  {}", arrow, details_of(record)));
}

void Trace::note(std::string_view text) {
    if (enabled_)
        output_.line(fmt::format("    {}", text));
}
