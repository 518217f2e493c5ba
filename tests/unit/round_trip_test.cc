// Every sample is decoded, answered with each status and sent on, and decoded again: what must survive is compared.
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/encoding.h"
#include "support/samples.h"

namespace {

using namespace support;

bool always(const SIP_CODE_MSG &) { return true; }
bool in_request(const SIP_CODE_MSG &sent) { return sent.method < SIP_RESPONSE_MSG_100_TRY; }
bool in_response(const SIP_CODE_MSG &sent) { return !in_request(sent); }
template <int Method>
bool in(const SIP_CODE_MSG &sent) {
    return sent.method == Method;
}
bool in_session(const SIP_CODE_MSG &sent) {
    const int method = sent.method;
    const bool sets_up =
        (method >= SIP_RESPONSE_MSG_180_RING && method <= SIP_RESPONSE_MSG_200_OK) || method == SIP_RESPONSE_MSG_181;
    const bool answers = sent.cseq.method == SIP_REQUEST_MSG_INVITE || sent.cseq.method == SIP_REQUEST_MSG_UPDATE;
    return in<SIP_REQUEST_MSG_INVITE>(sent) || (sets_up && answers);
}
bool with_timer(const SIP_CODE_MSG &sent) {
    return in_session(sent) && sent.method != SIP_RESPONSE_MSG_181 && sent.method != SIP_RESPONSE_MSG_182_RING;
}
bool with_options(const SIP_CODE_MSG &sent) { return in<SIP_REQUEST_MSG_INVITE>(sent) || in_response(sent); }

// Members, or all of a record, and the messages in which they survive.
const struct {
    std::vector<std::string> members;
    bool (*survive)(const SIP_CODE_MSG &sent);
} survivors[] = {
    {{"method", "callid", "cseq", "via_count", "via", "via1", "from", "to", "korvadex", "contact", "expire", "rack"},
     always},
    {{"rseq", "require"}, always},
    {{"uri", "alert", "event", "user_agent", "history_info", "author.username", "author.response"}, in_request},
    {{"replaces", "referred_by", "min_se"}, in<SIP_REQUEST_MSG_INVITE>},
    {{"supported"}, with_options},
    {{"session_expires"}, with_timer},
    {{"sdp"}, in_session},
    {{"record_route"}, in_response},
    {{"subscription_state", "message_summary.account", "message_summary.newmsgcount"}, in<SIP_REQUEST_MSG_NOTIFY>},
    {{"msg_sdp"}, in<SIP_REQUEST_MSG_MESSAGE>},
    {{"info"}, in<SIP_REQUEST_MSG_INFO>},
    {{"refer_to.refertotel"}, in<SIP_REQUEST_MSG_REFER>},
};

// But for these, which are not written.
bool is_written(std::string_view path) {
    return path != "sdp.fax.T38FaxMaxBuffer" && !path.ends_with("tag_use") && !path.ends_with("flag");
}

SIP_CODE_MSG decoded(std::string text) {
    SIP_CODE_MSG record{};
    EXPECT_EQ(Sip_Decode(text.data(), &record), 1) << text;
    return record;
}

void expect_survival(const SIP_CODE_MSG &sent, const std::string &text) {
    const SIP_CODE_MSG received = decoded(text);
    for (const auto &[members, survive] : survivors)
        for (const std::string &member : members)
            for (const Place &at : places()) {
                const bool is_part =
                    at.path.starts_with(member) && (at.path + ".").find_first_of(".[", member.size()) == member.size();
                if (!is_part || !is_written(at.path) || !survive(sent))
                    continue;
                if (at.is_text())
                    EXPECT_EQ(text_at(sent, at.path), text_at(received, at.path)) << at.path << " in\n" << text;
                else
                    EXPECT_EQ(number_at(sent, at.path), number_at(received, at.path)) << at.path << " in\n" << text;
            }
}

std::vector<EncodedCase> accepted_samples() {
    std::vector<EncodedCase> all;
    for (const Sample &sample : samples())
        if (decode(sample.text)["result"] == "1")
            all.push_back({sample.title, "", sample.text});
    return all;
}

class RoundTrip : public testing::TestWithParam<EncodedCase> {};

TEST_P(RoundTrip, keeps_what_must_survive) {
    SIP_CODE_MSG record = decoded(GetParam().expected);
    record.to.tag_use = record.to.tag[0] != '\0';
    record.author.author_type += 2; // from the header that was read to the challenge that is answered
    if (in_response(record)) {
        expect_survival(record, encode_response(record).text);
        return;
    }
    expect_survival(record, encode_request(record).text);
    record.to.tag_use = 1;
    record.to.tag[0] = 't';
    for (record.method = SIP_RESPONSE_MSG_100_TRY; record.method < SIP_CODE_METHOD_COUNT; ++record.method)
        expect_survival(record, encode_response(record).text);
}

INSTANTIATE_TEST_SUITE_P(Samples, RoundTrip, testing::ValuesIn(accepted_samples()), Title());

} // namespace
