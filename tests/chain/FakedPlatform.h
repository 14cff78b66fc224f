// What a run asks of the platform and of the world, faked for programs that are linked with
// norvane_faked_platform: the retrieval of URLs, the dispatcher of revocation modules, the clock of
// time-outs, and whether CRL contexts can be made. It also notes which signatures are verified.
#pragma once

#include "support/Der.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <map>
#include <string>
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
};

struct FakedPlatform {
    std::map<std::string, Objects> served; // by URL; the cache is empty
    std::vector<Retrieval> retrievals;
    std::vector<Question> questions; // about certificates that are all good

    bool refuses_crl_contexts = false;
    Objects signatures; // verified so far, each with its octets in reverse

    std::int64_t clock = 0, question_takes = 0; // milliseconds
    std::map<std::string, DWORD>
        retrieval_takes; // by URL, up to the time-out; nothing else takes time
};
extern FakedPlatform faked;

} // namespace norvane::testing
