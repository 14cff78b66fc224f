#include "asn1/Reader.h"
#include "platform/config/Configuration.h"
#include "platform/retrieval/Fetch.h"
#include "platform/retrieval/Flight.h"
#include "platform/retrieval/Transports.h"
#include "platform/store/contexts.h"
#include "platform/store/guarded.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <string>

namespace norvane {
namespace {

/// For a configuration that asks for no time at all.
constexpr std::chrono::milliseconds fallback_timeout = std::chrono::seconds{15};
/// How far ahead of the clock a CRL may be dated and still keep older ones out: clocks differ.
constexpr std::uint64_t believable_future_seconds = 86'400;

/// Seconds since 1970 as ticks of 100 ns since 1601.
std::uint64_t to_ticks(std::uint64_t seconds) {
    constexpr std::uint64_t seconds_from_1601_to_1970 = 11'644'473'600;
    constexpr std::uint64_t ticks_per_second = 10'000'000;
    return (seconds + seconds_from_1601_to_1970) * ticks_per_second;
}

FetchOutcome fetch(UrlScheme scheme, const FetchRequest& request) {
    if (scheme == UrlScheme::file) {
        return fetch_file(request);
    }
    const Transports* const servers = transports();
    if (servers == nullptr) {
        return FetchFailure{ERROR_MOD_NOT_FOUND};
    }
    const bool is_ldap = scheme == UrlScheme::ldap || scheme == UrlScheme::ldaps;
    return is_ldap ? servers->ldap(request) : servers->http(request);
}

/// Has a server's response take the place of what is cached, unless it is worse.
RetrievalOutcome accept(ObjectKind kind, const std::string& url, FetchedResponse fetched) {
    CacheEntry entry;
    entry.kind = kind;
    entry.url = url;
    entry.validators = std::move(fetched.validators);
    for (const std::string& part : fetched.parts) {
        entry.parts.push_back({reinterpret_cast<const std::uint8_t*>(part.data()),
                               static_cast<std::uint32_t>(part.size())});
    }
    entry.content_digest = content_digest(entry.parts);
    CachedResponses& cache = CachedResponses::instance();
    const ResponsePtr cached = cache.find(kind, url);
    const bool same = cached != nullptr && cached->content_digest == entry.content_digest;
    if (same && cached->validators == entry.validators) {
        return {ERROR_SUCCESS, cached};
    }
    Response response;
    response.objects = same ? cached->objects : read_objects_of(kind, entry.parts);
    response.validators = entry.validators;
    response.content_digest = entry.content_digest;
    if (!response.objects) {
        return {CRYPT_E_NO_MATCH, nullptr};
    }
    response.marks = marks_of(*response.objects);
    const std::time_t now = std::time(nullptr);
    if (cached != nullptr) {
        const std::uint64_t latest =
            to_ticks(static_cast<std::uint64_t>(now) + believable_future_seconds);
        if (const auto scope = rolled_back_scope(response.marks, cached->marks, latest)) {
            const auto held = marks_of(*cached->objects);
            const bool has_newer = std::ranges::find(held, *scope, &CrlMark::scope) != held.end();
            return has_newer ? RetrievalOutcome{ERROR_SUCCESS, cached}
                             : RetrievalOutcome{ERROR_INVALID_DATA, nullptr};
        }
        response.marks = merged_marks(response.marks, cached->marks);
    }
    entry.marks = response.marks;
    entry.received = now;
    auto accepted = std::make_shared<const Response>(std::move(response));
    cache.keep(entry, accepted);
    return {ERROR_SUCCESS, std::move(accepted)};
}

RetrievalOutcome retrieve_from_server(UrlScheme scheme, ObjectKind kind, const std::string& url,
                                      const Deadline& deadline) {
    const ResponsePtr cached = CachedResponses::instance().find(kind, url);
    FetchOutcome outcome =
        fetch(scheme, {.url = url,
                       .kind = kind,
                       .known = cached == nullptr ? Validators() : cached->validators,
                       .deadline = deadline,
                       .size_limit = std::min<std::uint64_t>(configuration().response_limit_bytes,
                                                             max_input_length),
                       .settings = configuration()});
    if (const auto* const failure = std::get_if<FetchFailure>(&outcome)) {
        return {failure->error, nullptr};
    }
    if (std::holds_alternative<NotModified>(outcome)) {
        return {ERROR_SUCCESS, cached};
    }
    return accept(kind, url, std::get<FetchedResponse>(std::move(outcome)));
}

RetrievalOutcome retrieve(std::string_view url, ObjectKind kind, DWORD flags, DWORD timeout_ms) {
    if (!has_url_characters(url)) {
        return {ERROR_INTERNET_INVALID_URL, nullptr};
    }
    const auto scheme = scheme_of(url);
    const auto& allowed = configuration().url_schemes;
    if (!scheme || std::ranges::find(allowed, name_of(*scheme)) == allowed.end()) {
        return {ERROR_INTERNET_UNRECOGNIZED_SCHEME, nullptr};
    }
    if ((flags & CRYPT_CACHE_ONLY_RETRIEVAL) != 0) {
        ResponsePtr cached = CachedResponses::instance().find(kind, url);
        return {cached == nullptr ? CRYPT_E_NOT_FOUND : ERROR_SUCCESS, std::move(cached)};
    }
    std::chrono::milliseconds timeout{timeout_ms};
    if (timeout.count() == 0) {
        timeout = configuration().retrieval_timeout;
    }
    if (timeout.count() == 0) {
        timeout = fallback_timeout;
    }
    const std::string text(url);
    return share_flight(retrieval_key(kind, url), Deadline::Clock::now() + timeout,
                        [scheme = *scheme, kind, text](const Deadline& deadline) {
                            return retrieve_from_server(scheme, kind, text, deadline);
                        });
}

/// What the caller is given: an opening of the store, or a context of it.
void* hand_out(ObjectStore& objects, ObjectKind kind, DWORD flags) {
    if ((flags & CRYPT_RETRIEVE_MULTIPLE_OBJECTS) != 0) {
        objects.open();
        return objects.handle();
    }
    const void* const context = kind == ObjectKind::crl
                                    ? static_cast<const void*>(share_context(*objects.crl_from(0)))
                                    : share_context(*objects.certificate_from(0));
    return const_cast<void*>(context);
}

} // namespace
} // namespace norvane

BOOL CryptRetrieveObjectByUrlA(LPCSTR pszUrl, LPCSTR pszObjectOid, DWORD dwRetrievalFlags,
                               DWORD dwTimeout, LPVOID* ppvObject, HCRYPTASYNC hAsyncRetrieve,
                               PCRYPT_CREDENTIALS pCredentials, LPVOID pvVerify,
                               PCRYPT_RETRIEVE_AUX_INFO pAuxInfo) noexcept {
    constexpr DWORD known_flags = CRYPT_RETRIEVE_MULTIPLE_OBJECTS | CRYPT_CACHE_ONLY_RETRIEVAL;
    if (ppvObject == nullptr) {
        return norvane::fail(E_INVALIDARG);
    }
    *ppvObject = nullptr;
    const bool certificates = pszObjectOid == CONTEXT_OID_CERTIFICATE;
    if (pszUrl == nullptr || (!certificates && pszObjectOid != CONTEXT_OID_CRL) ||
        (dwRetrievalFlags & ~known_flags) != 0 || hAsyncRetrieve != nullptr ||
        pCredentials != nullptr || pvVerify != nullptr || pAuxInfo != nullptr) {
        return norvane::fail(E_INVALIDARG);
    }
    const auto kind = certificates ? norvane::ObjectKind::certificate : norvane::ObjectKind::crl;
    return norvane::guarded([&]() -> BOOL {
        const auto outcome = norvane::retrieve(pszUrl, kind, dwRetrievalFlags, dwTimeout);
        if (outcome.response == nullptr) {
            return norvane::fail(outcome.error);
        }
        *ppvObject = norvane::hand_out(*outcome.response->objects, kind, dwRetrievalFlags);
        return TRUE;
    });
}
