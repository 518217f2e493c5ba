// What a message says, as one value per member of the record: of the record that it was written from, and of what a peer read.
//
// The keys are paths of the record's members ("via.addr.port", "sdp.a_coders[1]"). What has no member of its own is named
// after the member that it goes with ("from.display", "contact.transport", "uri.user_phone") or is "header.NAME".
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "written.h"

namespace interop {

using Facts = std::map<std::string, std::string>;

// What the record says.
Facts said_by(const Written &written);

// ---------------------------------------------------------------------------------------------------------------------
// A message as a peer took it apart. Names of headers and parameters are in lower case; a parameter without a value has an
// empty one.

using Parameters = std::map<std::string, std::string>;

struct Address {
    std::string display;
    std::string user;
    std::string host;
    std::string port;
    Parameters of_uri;
    Parameters of_header;
};

struct Via {
    std::string transport;
    std::string host;
    std::string port;
    Parameters parameters;
};

struct Media {
    std::string type;
    std::string port;
    std::string protocol;
    std::vector<std::string> formats;
    std::string address; // its own connection address
    std::vector<std::pair<std::string, std::string>> attributes;
};

struct Session {
    std::string protocol_version;
    std::string origin_address;
    std::string version; // of the origin line
    std::string address;
    std::vector<Media> media;
};

struct PeerMessage {
    std::string refused; // why, empty when the peer took the message
    std::string start;   // the method, or status code and phrase
    std::optional<Address> uri;
    std::vector<Via> vias;
    std::map<std::string, Address> addresses;      // from, to, contact and what else the peer takes apart
    std::map<std::string, Parameters> credentials; // authorization, www-authenticate and their likes
    std::map<std::string, std::string> headers;    // the others, values joined by commas
    std::string body;
    std::optional<Session> session;
    std::string session_refused; // why, empty when the peer took the session description or there is none
    std::vector<std::string> complaints;
};

// Members that stand in a header of their own, some of which few messages have.
std::vector<std::string> members_of_headers();

// What the peer read.
Facts read_by(const PeerMessage &message);

std::string lower(std::string text);

} // namespace interop
