// Who may ask the panel for anything: pages that were opened by the address that it printed, and nobody else.
#include "sim/panel/access.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace sim {

namespace {

constexpr std::size_t kTokenBytes = 16;

}  // namespace

std::string make_token() {
    std::array<unsigned char, kTokenBytes> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::system_error(errno, std::generic_category());
    }
    std::string token;
    for (unsigned char const byte : bytes) {
        token += "0123456789abcdef"[byte >> 4U];
        token += "0123456789abcdef"[byte & 15U];
    }
    return token;
}

bool are_same_secret(std::string_view one, std::string_view other) {
    if (one.size() != other.size()) {
        return false;
    }
    unsigned int difference = 0;
    for (std::size_t i = 0; i < one.size(); ++i) {
        difference |= static_cast<unsigned int>(one[i] ^ other[i]);
    }
    return difference == 0;
}

Access::Access(int port, std::string token)
    : host_("127.0.0.1:" + std::to_string(port)),
      local_host_("localhost:" + std::to_string(port)),
      origin_("http://" + host_),
      local_origin_("http://" + local_host_),
      prefix_("/" + std::move(token) + "/") {}

Error Access::refusal(Asked const& asked) const {
    if (asked.host != host_ && asked.host != local_host_) {
        return "not for this host";
    }
    bool const own = asked.origin == (asked.host == host_ ? origin_ : local_origin_);
    bool const from_elsewhere = asked.origin.empty() ? asked.changes_something : !own;
    bool const site_is_ours = asked.fetch_site.empty() || asked.fetch_site == "same-origin" ||
                              (asked.fetch_site == "none" && !asked.changes_something);
    if (from_elsewhere || !site_is_ours) {
        return "not from this page";
    }
    if (!are_same_secret(std::string_view(asked.path).substr(0, prefix_.size()), prefix_)) {
        return "not with this address";
    }
    return {};
}

}  // namespace sim
