// Who may ask the panel for anything: pages that were opened by the address that it printed, and nobody else.
#pragma once

#include <string>
#include <string_view>

#include "sim/core/error.h"

namespace sim {

// 128 bits from the kernel as 32 hexadecimal digits. Throws std::system_error where it has none.
std::string make_token();

// In a time that tells nothing about where they differ.
bool are_same_secret(std::string_view one, std::string_view other);

// What a browser says about a request.
struct Asked {
    std::string path;                // /TOKEN/NAME
    std::string host;                // the header Host
    std::string origin;              // the header Origin; empty: none
    std::string fetch_site;          // the header Sec-Fetch-Site; empty: none
    bool changes_something = false;  // more than reading
};

class Access {
public:
    Access(int port, std::string token);

    // The page's address, for a person.
    std::string address() const { return origin_ + prefix_; }
    // Why the request is refused; empty: it is not.
    // It has to be for this host, so that no name of another leads here; from a page of ours, where it tells that or
    // changes something; and below the token.
    Error refusal(Asked const& asked) const;
    // What stands behind the token, of a path that is not refused.
    std::string name_in(std::string const& path) const { return path.substr(prefix_.size()); }

private:
    std::string const host_;
    std::string const local_host_;  // the same by its name
    std::string const origin_;
    std::string const local_origin_;
    std::string const prefix_;  // of every path: /TOKEN/
};

}  // namespace sim
