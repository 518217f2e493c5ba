#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "../messages.h"
#include "peers.h"

namespace bench {
namespace {

std::string fields_by_sipcode(std::string text) {
    static SIP_CODE_MSG record;
    decode(text, record);
    return shown(fields_of(record));
}

// The names of the header lines in lower case, sorted, each once. Stacks write the headers in different orders, and
// some write one line for each value of a list.
std::string header_names(const std::string &text) {
    std::set<std::string> names;
    const std::string head = text.substr(0, text.find("\r\n\r\n") + 2);
    for (std::size_t at = head.find("\r\n") + 2; at < head.size(); at = head.find("\r\n", at) + 2) {
        std::string name = head.substr(at, head.find(':', at) - at);
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
        names.insert(name);
    }
    std::string lines;
    for (const std::string &name : names)
        lines += name + "\n";
    return lines;
}

void check_equal(const peer &p, const std::string &what, const std::string &wanted, const std::string &got) {
    if (wanted == got)
        return;
    std::fprintf(stderr, "%s differs: %s\n--- sipcode\n%s--- %s\n%s", p.name, what.c_str(), wanted.c_str(), p.name,
                 got.c_str());
    std::exit(1);
}

void check_peer(const peer &p) {
    for (const message &m : sample_messages())
        check_equal(p, "fields of " + m.name, fields_by_sipcode(m.text), fields_read_by(p, m.text));
    for (const record_to_encode &source : sample_records()) {
        const std::string text = encoded(source.record);
        const printer print = p.printer_of(text);
        print();
        const std::string printed(print()); // printing twice must not change the structures
        check_equal(p, "headers of the printed " + source.name, header_names(text), header_names(printed));
        check_equal(p, "fields of the printed " + source.name, fields_by_sipcode(text), fields_by_sipcode(printed));
    }
}

} // namespace

std::string fields_read_by(const peer &p, const std::string &text) {
    std::string result;
    p.reader_of(text)([&result](const fields &f) { result = shown(f); });
    return result;
}

void check_peers() {
    for (const peer *p : peers)
        check_peer(*p);
}

} // namespace bench
