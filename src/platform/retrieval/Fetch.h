#pragma once

#include "platform/config/Configuration.h"
#include "platform/retrieval/Deadline.h"
#include "platform/retrieval/RetrievalUrl.h"
#include "platform/store/SignedData.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace norvane {

/// By what a server recognises the response that we have (RFC 9110 8.8). Empty where it told none.
struct Validators {
    std::string etag;          ///< as the server wrote it, with quotes
    std::string last_modified; ///< as the server wrote it
    std::string source;        ///< the URL that it came from, behind all redirections

    [[nodiscard]] bool operator==(const Validators&) const = default;
    [[nodiscard]] bool can_ask() const { return !etag.empty() || !last_modified.empty(); }
};

struct FetchRequest {
    std::string url;
    ObjectKind kind{};
    Validators known; ///< of the response that is cached; empty if there is none
    const Deadline& deadline;
    std::uint64_t size_limit = 0; ///< bytes of the response in all
    const Configuration& settings;
};

/// What a server delivered: one body, or the values of attributes.
struct FetchedResponse {
    std::vector<std::string> parts;
    Validators validators;
};

/// The response that the request knows is still the right one.
struct NotModified {};

struct FetchFailure {
    DWORD error;            ///< the last error for it
    std::string cause = {}; ///< in the words of who knows it; empty if there are none
};

using FetchOutcome = std::variant<FetchedResponse, NotModified, FetchFailure>;

/// Each asks a server of its schemes, and gives up soon after the deadline unless the look-up of a
/// name blocks. A failure of this process is told as such. They throw std::bad_alloc and nothing
/// else, `fetch_file` SystemFailure too.
[[nodiscard]] FetchOutcome fetch_http(const FetchRequest& request);
[[nodiscard]] FetchOutcome fetch_ldap(const FetchRequest& request);
[[nodiscard]] FetchOutcome fetch_file(const FetchRequest& request);

} // namespace norvane
