// The decoders, by file. Each reads one header family of a split message and fills one member of the record. The head
// of its file describes what it does with bad input. A missing header leaves the member as it was. The driver shows the
// order of the calls.
//
// Names and argument order are part of the interface. The exported ones take a SIP_MSG; see decode.h.
#pragma once

#include "message.h"

namespace sipcode {

// ---- driver.cpp

// Decodes the text in split.data, terminated and length bytes long. The report may be null. Returns 1, or -1 if the
// message is refused.
int decode(SIP_MSG &split, std::size_t length, SIP_CODE_MSG &record, SIP_DECODE_REPORT *report);

// ---- scan.cpp

// The text inside the first angle brackets outside a quoted string. The whole value if there are none, or if a bracket
// or a quote is not closed, which is logged. Parse_Get_In_Brackets is the same operation.
padded_text Parse_Brackets(padded_text value);

// ---- scalar.cpp

int Parse_Callid(const message &msg, SIP_CODE_MSG *pcode_msg);
int Parse_Cseq(SIP_CSEQ *pcseq, const message &msg);
void Parse_Service_Route(const message &msg, SIP_CODE_MSG *pcode_msg);
int Parse_Korvadex(const message &msg, SIP_CODE_MSG *pcode_msg);
int Parse_Korvadex_Trunk(const message &msg, SIP_CODE_MSG *pcode_msg);
void Parse_Forwards(int *forward, const message &msg);
int Parse_Require(const message &msg, SIP_CODE_MSG *pcode_msg);
int Parse_RAck(SIP_RACK *prack_msg, const message &msg);
int Parse_RSeq(const message &msg, SIP_CODE_MSG *pcode_msg);
void Parse_Expires(int *expiry, const message &msg);
void Parse_Alert(SIP_ALERT *palert, const message &msg);
int Parse_Event(SIP_EVENT *pEvent, const message &msg);
void Parse_Date(const message &msg, SIP_CODE_MSG *pcode_msg);
void Parse_Replaces(const message &msg, SIP_CODE_MSG *pcode_msg);
void Parse_ReferredBy(const message &msg, SIP_CODE_MSG *pcode_msg);
void Parse_Subscription_State(const message &msg, SIP_CODE_MSG *pcode_msg);
void Parse_User_Agent(const message &msg, SIP_CODE_MSG *pcode_msg);
void Parse_Session_Expires(SIP_SESSION_EXPIRES *psessionexpires, const message &msg);
void Parse_Min_Se(SIP_MIN_SE *pMinSe, const message &msg);
void Parse_Min_Expires(SIP_MIN_EXPIRES *pMinExpires, const message &msg);
int Parse_Call_Info(const message &msg, SIP_CODE_MSG *pcode_msg);
void Parse_Content_Type(SIP_CONTENT_TYPE *content_type, const message &msg);

// ---- address.cpp

// Reads a URI into user, ip and port. A null slice writes nothing.
SIP_URI_KIND Parse_Uri(const bounded_store &store, padded_text uri, char (&user)[32], IPV4_ADDRESS &addr);
void Parse_PCalledPartyID(SIP_FROMTO *callparty, const message &msg);
void Parse_From(SIP_FROMTO *from, const message &msg);
void Parse_To(SIP_FROMTO *to, const message &msg);
void Parse_Contact(SIP_CONTACT *contact, const message &msg);

// ---- via.cpp

int SIP_Decode_Judge_Via_Count(const message &msg);
void Parse_Via(SIP_VIA *pvia, const message &msg);
void Parse_Via_Pair(SIP_VIA *pvia1, SIP_VIA *pvia, const message &msg);

// ---- route.cpp

void Parse_Record_Route(const message &msg, SIP_CODE_MSG *pcode_msg);
int Parse_Supported(const message &msg, SIP_CODE_MSG *pcode_msg);

// ---- history.cpp

void Parse_History_info(const message &msg, SIP_CODE_MSG *pcode_msg);

// ---- transfer.cpp

int Parse_Refer_Info(REFER_INFO *refer_info, const message &msg);

// ---- auth.cpp

void Parse_Author(SIP_AUTHOR *pauthor, const message &msg);
void Parse_Authen(SIP_AUTHEN *pauthen, const message &msg);
void Parse_Authen_Info(NEXT_NONCE *next_nonce, const message &msg);

// ---- sdp.cpp

void Parse_Sdp(SIP_SDP *SDP, message &msg);

// ---- body.cpp

void Parse_Sdp_Sub_And_Msg(SIP_MES_SDP *SDP, const message &msg);
void Parse_Message_Summary(const bounded_store &store, MESSAGE_SUMMARY *ptMsgSummary, const char *pchMesseagSummary);
void Parse_Info(SIP_INFO *info, message &msg); // trims the body of an application/dtmf message

} // namespace sipcode
