// The record of code.h described as data, once, for everything that walks over its members: a table for each type of
// record, nested types first. A row names a member; the rest comes from its declaration. To describe a new member, add
// its row at the same place as in the declaration. A member without a row does not compile.
//
//   ROW(m)                  a member whose zero means that it is absent
//   VALUE(m)                a member whose zero is a value if its record is present
//   named(ROW(m), names)    a number whose values have names
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

#include "code.h"

namespace sipcode {

enum class Kind {
    text,    // char[N]; a careless host may leave it unterminated
    number,  // signed, 4 or 8 bytes
    record,  // a nested record
    pointer, // belongs to the host; means nothing outside its process
};

// The enumeration that names the values of a number.
enum class Names { none, method, codec, transport, option_tag, digest_header, direction };

struct Record;

struct Member {
    std::string_view name;
    Kind kind;
    std::size_t offset; // of the first element within its record
    std::size_t size;   // of one element; of a text, including its terminator
    std::size_t alignment;
    std::size_t count; // elements: 1, or the length of the array
    bool is_array;
    bool zero_is_value = false;     // 0 is a value if the record around it is present
    const Record *record = nullptr; // for Kind::record
    Names names = Names::none;      // for a number
};

// The flag that switches a record on.
struct Switch {
    enum class On { always, when_one, when_not_zero };
    On on = On::always;
    std::size_t offset = 0; // of the flag, an int
};

struct Record {
    std::span<const Member> members; // in declaration order
    Switch present;
};

// ---------------------------------------------------------------------------------------------------------------------
// From a declaration to its description

// Each specialisation holds the rows of one record type. If the flag is not "use", it also names the flag.
template <typename T>
struct Table;

template <typename Type>
struct Described {
    using T = Type;
    static constexpr Switch present = [] {
        if constexpr (requires { T::use; })
            return Switch{Switch::On::when_one, offsetof(T, use)};
        else
            return Switch{};
    }();
};

// Whether the rows cover the record from its first byte to its last, without a gap except for alignment.
template <typename T>
constexpr bool covers_all_members() {
    const auto aligned = [](std::size_t offset, std::size_t alignment) {
        return (offset + alignment - 1) / alignment * alignment;
    };
    std::size_t end = 0;
    for (const Member &row : Table<T>::rows) {
        if (row.offset != aligned(end, row.alignment))
            return false;
        end = row.offset + row.size * row.count;
    }
    return aligned(end, alignof(T)) == sizeof(T);
}

template <typename T>
constexpr Record describe_record() {
    static_assert(covers_all_members<T>(), "a member of the record is not described, or out of order");
    return {Table<T>::rows, Table<T>::present};
}

template <typename T>
constexpr Record description = describe_record<T>();

template <typename E>
constexpr Names names_of_type() {
    if constexpr (std::is_same_v<E, e_codec>)
        return Names::codec;
    else if constexpr (std::is_same_v<E, TRANS_TYPE_E>)
        return Names::transport;
    else if constexpr (std::is_same_v<E, SIP_SUPPORTED_TYPE>)
        return Names::option_tag;
    else
        return Names::none;
}

// T is the member's declared type.
template <typename T>
constexpr Member describe(std::string_view name, std::size_t offset) {
    using Element = std::remove_extent_t<T>;
    if constexpr (std::is_same_v<Element, char>) {
        static_assert(std::rank_v<T> == 1, "a text is one array of char");
        return {name, Kind::text, offset, sizeof(T), alignof(T), 1, false};
    } else {
        Member row{name,
                   Kind::number,
                   offset,
                   sizeof(Element),
                   alignof(Element),
                   sizeof(T) / sizeof(Element),
                   std::is_array_v<T>};
        if constexpr (std::is_class_v<Element>) {
            row.kind = Kind::record;
            row.record = &description<Element>;
        } else if constexpr (std::is_pointer_v<Element>) {
            row.kind = Kind::pointer;
        } else {
            static_assert(std::is_enum_v<Element> || (std::is_integral_v<Element> && std::is_signed_v<Element>));
            static_assert(sizeof(Element) == sizeof(int) || sizeof(Element) == sizeof(long));
            row.names = names_of_type<Element>();
        }
        return row;
    }
}

constexpr Member zero_is_value(Member row) {
    row.zero_is_value = true;
    return row;
}

constexpr Member named(Member row, Names names) {
    row.names = names;
    return row;
}

// ---------------------------------------------------------------------------------------------------------------------
// The tables

#define ROW(member) describe<decltype(T::member)>(#member, offsetof(T, member))
#define VALUE(member) zero_is_value(ROW(member))

template <>
struct Table<IPV4_ADDRESS> : Described<IPV4_ADDRESS> {
    static constexpr std::array rows = {ROW(ip), VALUE(port)};
};

template <>
struct Table<DNS_ADDR> : Described<DNS_ADDR> {
    static constexpr std::array rows = {ROW(use), ROW(dnsname)};
};

template <>
struct Table<SIP_URI> : Described<SIP_URI> {
    static constexpr std::array rows = {ROW(user), ROW(addr), ROW(dns)};
};

template <>
struct Table<SIP_VIA> : Described<SIP_VIA> {
    static constexpr std::array rows = {ROW(branch), ROW(rport), ROW(addr)};
};

template <>
struct Table<SIP_CONTACT> : Described<SIP_CONTACT> {
    static constexpr std::array rows = {ROW(user), ROW(addr)};
};

template <>
struct Table<SIP_FROMTO> : Described<SIP_FROMTO> {
    static constexpr std::array rows = {ROW(tag_use), ROW(user), ROW(tag), ROW(addr), ROW(dns), ROW(flag)};
};

template <>
struct Table<SIP_REQUST_URI> : Described<SIP_REQUST_URI> {
    static constexpr Switch present = {Switch::On::when_one, offsetof(T, tag_use)};
    static constexpr std::array rows = {ROW(tag_use), ROW(user), ROW(tag), ROW(addr)};
};

template <>
struct Table<SIP_P_ASSERTED_IDENTITY> : Described<SIP_P_ASSERTED_IDENTITY> {
    static constexpr Switch present = {Switch::On::when_one, offsetof(T, tag_use)};
    static constexpr std::array rows = {ROW(tag_use), ROW(user), ROW(tag), ROW(addr)};
};

template <>
struct Table<SIP_CSEQ> : Described<SIP_CSEQ> {
    static constexpr std::array rows = {VALUE(seq), named(VALUE(method), Names::method)};
};

template <>
struct Table<SIP_EXPIRE> : Described<SIP_EXPIRE> {
    static constexpr std::array rows = {ROW(use), VALUE(expires)};
};

template <>
struct Table<SIP_CONTENT_TYPE> : Described<SIP_CONTENT_TYPE> {
    static constexpr std::array rows = {ROW(use), ROW(type)};
};

template <>
struct Table<SIP_ALERT> : Described<SIP_ALERT> {
    static constexpr std::array rows = {ROW(use), ROW(alertinfo)};
};

template <>
struct Table<SIP_REQUIRE> : Described<SIP_REQUIRE> {
    static constexpr std::array rows = {ROW(use), ROW(REQUIRE)};
};

template <>
struct Table<SIP_RSEQ> : Described<SIP_RSEQ> {
    static constexpr std::array rows = {ROW(use), VALUE(RSeq)};
};

template <>
struct Table<SIP_EVENT> : Described<SIP_EVENT> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_RECORD_ROUTE> : Described<SIP_RECORD_ROUTE> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_SERVICE_ROUTE> : Described<SIP_SERVICE_ROUTE> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_DATE> : Described<SIP_DATE> {
    static constexpr std::array rows = {ROW(use), ROW(datetime)};
};

template <>
struct Table<SIP_REPLACES> : Described<SIP_REPLACES> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_REFERREDBY> : Described<SIP_REFERREDBY> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_SUBSCRIPTION_STATE> : Described<SIP_SUBSCRIPTION_STATE> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_USER_AGENT> : Described<SIP_USER_AGENT> {
    static constexpr std::array rows = {ROW(use), ROW(authencryptflag), ROW(useragent)};
};

template <>
struct Table<SIP_SESSION_EXPIRES> : Described<SIP_SESSION_EXPIRES> {
    static constexpr std::array rows = {ROW(use), VALUE(sessionexpires), ROW(refresher)};
};

template <>
struct Table<SIP_MIN_SE> : Described<SIP_MIN_SE> {
    static constexpr std::array rows = {ROW(use), VALUE(minse)};
};

template <>
struct Table<SIP_MIN_EXPIRES> : Described<SIP_MIN_EXPIRES> {
    static constexpr std::array rows = {ROW(use), VALUE(min_expires)};
};

template <>
struct Table<SIP_P_EARLY_MEDIA> : Described<SIP_P_EARLY_MEDIA> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_CALL_INFO> : Described<SIP_CALL_INFO> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_RACK> : Described<SIP_RACK> {
    static constexpr Switch present = {Switch::On::when_not_zero, offsetof(T, rack)};
    static constexpr std::array rows = {ROW(rack), VALUE(cseq), named(VALUE(method), Names::method)};
};

template <>
struct Table<SIP_SUPPORTED> : Described<SIP_SUPPORTED> {
    static constexpr std::array rows = {ROW(use), ROW(SUPPORTED), ROW(supported_type)};
};

template <>
struct Table<CODEC_RTPMAP> : Described<CODEC_RTPMAP> {
    static constexpr Switch present = {Switch::On::when_not_zero, offsetof(T, a_coder)};
    static constexpr std::array rows = {ROW(a_coder), VALUE(a_payload)};
};

template <>
struct Table<FAX_INFO> : Described<FAX_INFO> {
    static constexpr std::array rows = {ROW(udptlport),
                                        ROW(T38FaxMaxBuffer),
                                        ROW(T38MaxBitRate),
                                        VALUE(T38FaxVersion),
                                        ROW(T38FaxMaxDatagram),
                                        VALUE(T38FaxFillBitRemoval),
                                        VALUE(T38FaxTranscodingMMR),
                                        VALUE(T38FaxTranscodingJBIG),
                                        ROW(T38FaxRateManagement),
                                        ROW(T38FaxUdpEC),
                                        ROW(fax_addr)};
};

template <>
struct Table<SIP_SDP> : Described<SIP_SDP> {
    static constexpr std::array rows = {ROW(a_use),          ROW(v_use),
                                        ROW(fax_use),        ROW(a_coders),
                                        ROW(v_coders),       ROW(a_content),
                                        ROW(v_content),      ROW(a_addr),
                                        ROW(v_addr),         ROW(fax),
                                        ROW(o_sec),          ROW(o_sec_flag),
                                        ROW(a_conten_nouse), named(VALUE(a_media), Names::direction),
                                        ROW(v_conten_nouse), named(ROW(v_media), Names::direction),
                                        ROW(a_ptime),        ROW(rtpmap)};
};

template <>
struct Table<SIP_MES_SDP> : Described<SIP_MES_SDP> {
    static constexpr std::array rows = {ROW(use), ROW(content)};
};

template <>
struct Table<SIP_INFO> : Described<SIP_INFO> {
    static constexpr std::array rows = {ROW(use), ROW(key)};
};

template <>
struct Table<SIP_AUTHOR> : Described<SIP_AUTHOR> {
    static constexpr std::array rows = {ROW(use),      named(ROW(author_type), Names::digest_header),
                                        VALUE(stale),  ROW(noncecount),
                                        ROW(username), ROW(realm),
                                        ROW(nonce),    ROW(uri),
                                        ROW(response), ROW(algorithm),
                                        ROW(cnonce),   ROW(qop)};
};

template <>
struct Table<NEXT_NONCE> : Described<NEXT_NONCE> {
    static constexpr std::array rows = {ROW(use), ROW(nonce)};
};

template <>
struct Table<SIP_AUTHEN> : Described<SIP_AUTHEN> {
    static constexpr std::array rows = {ROW(use),     named(ROW(authen_type), Names::digest_header),
                                        VALUE(stale), ROW(realm),
                                        ROW(nonce),   ROW(algorithm),
                                        ROW(qop),     ROW(next_nonce)};
};

template <>
struct Table<REFER_INFO> : Described<REFER_INFO> {
    static constexpr std::array rows = {ROW(use),        VALUE(refermode), ROW(tochn),         ROW(refertoip),
                                        ROW(refertotel), ROW(refertotag),  ROW(referfromtag),  ROW(callid),
                                        ROW(referbytel), ROW(referbyip),   ROW(refertocontent)};
};

template <>
struct Table<SIP_HISTORY_INFO> : Described<SIP_HISTORY_INFO> {
    static constexpr std::array rows = {ROW(use), ROW(user), ROW(addr), ROW(index), ROW(cause)};
};

template <>
struct Table<MESSAGE_SUMMARY> : Described<MESSAGE_SUMMARY> {
    static constexpr std::array rows = {
        ROW(use),           ROW(messageswaiting),  ROW(account),          VALUE(newmsgcount),
        VALUE(oldmsgcount), VALUE(urgentmsgcount), VALUE(urgentoldcount), ROW(addr)};
};

template <>
struct Table<SIP_XML> : Described<SIP_XML> {
    static constexpr Switch present = {Switch::On::when_not_zero, offsetof(T, use)};
    static constexpr std::array rows = {ROW(use), ROW(xml)};
};

template <>
struct Table<SIP_CODE_MSG> : Described<SIP_CODE_MSG> {
    static constexpr std::array rows = {ROW(xml_buf),
                                        named(VALUE(method), Names::method),
                                        ROW(via_count),
                                        ROW(callid),
                                        ROW(korvadex),
                                        ROW(korvadex_trunk),
                                        ROW(max_forward),
                                        ROW(user_phone),
                                        ROW(via),
                                        ROW(via1),
                                        ROW(expire),
                                        ROW(xml),
                                        ROW(uri),
                                        ROW(cseq),
                                        ROW(from),
                                        ROW(to),
                                        ROW(contact),
                                        ROW(sdp),
                                        ROW(content),
                                        ROW(info),
                                        ROW(authen),
                                        ROW(author),
                                        ROW(refer_to),
                                        ROW(alert),
                                        ROW(supported),
                                        ROW(require),
                                        ROW(rseq),
                                        ROW(rack),
                                        ROW(history_info),
                                        ROW(requst_uri),
                                        ROW(p_passerted_identity),
                                        ROW(callparty),
                                        ROW(msg_sdp),
                                        ROW(event),
                                        ROW(record_route),
                                        ROW(date),
                                        ROW(trans_type),
                                        ROW(user_agent),
                                        ROW(service_route),
                                        ROW(replaces),
                                        ROW(referred_by),
                                        ROW(subscription_state),
                                        ROW(session_expires),
                                        ROW(min_se),
                                        ROW(min_expires),
                                        ROW(p_early_media),
                                        ROW(message_summary),
                                        ROW(call_info)};
};

#undef ROW
#undef VALUE

} // namespace sipcode
