// What a run asks of the platform and of the world, faked for programs that are linked with
// norvane_faked_platform: the retrieval of URLs, the dispatcher of revocation modules, the clock of
// time-outs, and whether CRL contexts can be made.
#pragma once

#include "support/Der.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace norvane::testing {

using Objects = std::vector<Bytes>;

struct Retrieval {
    std::string url;
    DWORD flags = 0, timeout = 0;
    LPCSTR kind = CONTEXT_OID_CRL;

    bool operator==(const Retrieval&) const = default;
};

// What the dispatcher was asked.
struct Question {
    Bytes subject, issuer;
    DWORD flags = 0, timeout = 0;
    SYSTEMTIME time{};
    std::vector<Objects> cert_stores;
    Objects crls;
};

struct Answer {
    DWORD error = 0, reason = 0; // no error: good
};

struct FakedPlatform {
    std::map<std::string, Objects> cached; // what a URL gives to those who ask the cache alone,
    std::map<std::string, Objects> served; // and to all others
    std::vector<Retrieval> retrievals;

    std::vector<std::pair<Bytes, Answer>> answers; // by certificate; good for others
    std::vector<Question> questions;

    bool refuses_crl_contexts = false;

    // With a clock, it stands still but for these, in milliseconds.
    std::optional<std::int64_t> clock;
    std::int64_t retrieval_takes = 0, reading_takes = 0, question_takes = 0;
    bool is_reading = false;
};
extern FakedPlatform faked;

} // namespace norvane::testing
