// Random records such as a careful host fills, the same for the same seed.
#pragma once

#include <initializer_list>
#include <random>
#include <string>

#include "code.h"

namespace interop {

class PlausibleRecords {
  public:
    explicit PlausibleRecords(unsigned seed) : draw_(seed) {}

    // A request of any method, with the headers and the body that go with it.
    SIP_CODE_MSG request();

    // A response of any kind to a request of any method.
    SIP_CODE_MSG response();

  private:
    unsigned below(unsigned n) { return static_cast<unsigned>(draw_() % n); }
    int between(int low, int high) { return low + static_cast<int>(below(static_cast<unsigned>(high - low + 1))); }
    std::string number(int low, int high) { return std::to_string(between(low, high)); }
    bool chance(unsigned percent) { return below(100) < percent; }
    template <typename T>
    T one_of(std::initializer_list<T> values) {
        return values.begin()[below(static_cast<unsigned>(values.size()))];
    }

    std::string hex(unsigned digits);
    std::string user();
    std::string host_name();
    std::string address();
    IPV4_ADDRESS transport_address();

    void fill_uri(SIP_URI &uri);
    void fill_party(SIP_FROMTO &party);
    void fill_via(SIP_VIA &via);
    void fill_common(SIP_CODE_MSG &record);
    void fill_contact(SIP_CODE_MSG &record);
    void fill_route(SIP_CODE_MSG &record);
    void fill_supported(SIP_CODE_MSG &record);
    void fill_session_timer(SIP_CODE_MSG &record);
    void fill_credentials(SIP_CODE_MSG &record);
    void fill_identities(SIP_CODE_MSG &record);
    void fill_history(SIP_CODE_MSG &record);
    void fill_transfer(SIP_CODE_MSG &record);
    void fill_event(SIP_CODE_MSG &record);
    void fill_session(SIP_CODE_MSG &record);
    void fill_audio(SIP_SDP &sdp);
    void fill_video(SIP_SDP &sdp);
    void fill_fax(SIP_SDP &sdp);
    void fill_request_body(SIP_CODE_MSG &record);

    std::mt19937 draw_;
};

} // namespace interop
