// History-Info, and the bodies that are no session description: DTMF and message-waiting summaries.
#include <gtest/gtest.h>

#include "support/decoding.h"
#include "support/encoding.h"
#include "support/guarded.h"
#include "support/recording_host.h"

namespace {

using namespace support;

std::string message(const std::string &method) {
    return method + " sip:h SIP/2.0\r\nCSeq: 1 " + method +
           "\r\nCall-ID: c\r\nVia: SIP/2.0/UDP h;branch=b\r\nFrom: sip:f\r\nTo: sip:t\r\n";
}

// Which of the four entries are free depends on what the record held before.
TEST(History, table) {
    const struct {
        std::string before;
        std::string header;
        std::string changed;
    } rows[] = {
        {"", "History-Info: <sip:2002@h;cause=302>;index=1, <sip:1001@i:5070;cause=480>;index=1.1",
         "history_info[0] use=1 user=2002 addr=h:5060 cause=302\nhistory_info[1] use=1 user=1001 addr=i:5070 "
         "cause=480"},
        {"", "History-Info: sip:a@h;cause=302", ""},
        {"", "history-info: <sip:a@h>\r\nHistory-Info: <sip:b@h>", "history_info[0] use=1 user=a addr=h:5060"},
        {"", "History-Info: <tel:1><tel:2>,<tel:3> x <tel:4>;<tel:5>",
         "history_info[0] use=1 user=1\nhistory_info[1] use=1 user=2\nhistory_info[2] use=1 user=3\nhistory_info[3] "
         "use=1 user=4"},
        {"history_info[0].use=1 | history_info[2].use=2", "History-Info: <tel:1>,<tel:2>,<tel:3>",
         "history_info[1] use=1 user=1\nhistory_info[3] use=1 user=2"},
        {"history_info[0].cause=404 | history_info[1].cause=404", "History-Info: <tel:1>, <tel:2;xcause=1;cause=2>",
         "history_info[0] use=1 user=1\nhistory_info[1] use=1 user=2 cause=1;c"},
        {"", "History-Info: <tel:1;cause=4801>,<tel:2;Cause=302>,<tel:3;cause=48>,<tel:4;cause=>",
         "history_info[0] use=1 user=1 cause=480\nhistory_info[1] use=1 user=2\nhistory_info[2] use=1 user=3 cause=48\n"
         "history_info[3] use=1 user=4"},
        {"", "History-Info: <tel:1>;cause=302,<tel:2", "history_info[0] use=1 user=1"},
        {"", "History-Info: <tel:1<tel:2>", "history_info[0] use=1 user=1<tel:2"},
        {"", "History-Info: " + std::string(504, 'x') + "<tel:1>", "history_info[0] use=1 user=1"},
        {"", "History-Info: " + std::string(505, 'x') + "<tel:1>", ""},
    };
    for (const auto &[before, header, changed] : rows) {
        SIP_CODE_MSG without = record_of(before);
        SIP_CODE_MSG with = without;
        Sip_Decode((message("BYE") + "\r\n").data(), &without);
        Sip_Decode((message("BYE") + header + "\r\n\r\n").data(), &with);
        EXPECT_EQ(changes(members_of(without, zero), members_of(with, zero)), changed) << header;
    }
}

TEST(Summary, table) {
    const struct {
        std::string body;
        std::string changed;
    } rows[] = {
        {"Messages-Waiting: yes\nMessage-Account: sip:*97@10.0.0.1\nVoice-Message: 2/8 (0/2)\n",
         " messageswaiting=yes account=*97 newmsgcount=2 oldmsgcount=8 urgentmsgcount=0 urgentoldcount=2 "
         "addr=10.0.0.1:5060"},
        {"xVoice-Message:+1/-2\t( 3/4\nx Message-Account: tel:1\nxMessages-Waiting: \n",
         " messageswaiting= account=1 newmsgcount=1 oldmsgcount=-2 urgentmsgcount=3 urgentoldcount=4"},
        {"Voice-Message: 1/2(3/4)\n", " newmsgcount=1 oldmsgcount=2 urgentmsgcount=3 urgentoldcount=4"},
        {"Voice-Message: 3/ 1 (2 /3)\n", " newmsgcount=3 oldmsgcount=1 urgentmsgcount=2"},
        {"Voice-Message: 1:2 (3/4)\n", " newmsgcount=1"},
        {"Voice-Message: 1/2 3/4\n", " newmsgcount=1 oldmsgcount=2"},
        {"Voice-Message: 1/2 (3/x)\n", " newmsgcount=1 oldmsgcount=2 urgentmsgcount=3"},
        {"Voice-Message: x/1\nVoice-Message: 1/1\n", ""},
        {"Messages-Waiting: 1234567\n", " messageswaiting=123456"},
        {"messages-waiting: yes\nMessages-Waiting:yes\nMessage-Account:sip:a@h\n", ""},
        {"Messages-Waiting: yes\nVoice-Message: 1/2", " messageswaiting=yes"},
        {std::string(487, 'x') + "Messages-Waiting: yes\n", " messageswaiting=yes"}, // 510 characters
        {std::string(488, 'x') + "Messages-Waiting: yes\n", ""},
    };
    for (const auto &[body, changed] : rows) {
        const Guarded record(sizeof(SIP_CODE_MSG), stale);
        Parse_Message_Summary(&record.as<SIP_CODE_MSG>().message_summary, Guarded(wire(body)).data());
        EXPECT_EQ(changes({{"result", "1"}}, members_of(record.as<SIP_CODE_MSG>())), "message_summary use=1" + changed)
            << body;
    }
    MESSAGE_SUMMARY summary{};
    Parse_Message_Summary(&summary, nullptr);
    Parse_Message_Summary(&summary, Guarded(std::string_view()).data());
    EXPECT_EQ(summary.use, 0) << "of no text";
}

} // namespace
