#include "asn1/Reader.h"
#include "platform/config/Configuration.h"
#include "platform/retrieval/CachedResponses.h"
#include "platform/retrieval/FailedRetrievals.h"
#include "platform/retrieval/Fetch.h"
#include "platform/retrieval/Flight.h"
#include "platform/retrieval/RetrievalSource.h"
#include "platform/retrieval/ToldRetrieval.h"
#include "platform/retrieval/Transports.h"
#include "platform/store/contexts.h"
#include "platform/store/guarded.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <string>

namespace norvane {
namespace {

/// For a configuration that asks for no time at all.
constexpr std::chrono::milliseconds fallback_timeout = std::chrono::seconds{15};
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

ByteView view_of(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()),
            static_cast<std::uint32_t>(text.size())};
}

/// Each CRL of a store as a part of its own.
std::vector<ByteView> parts_of(const ObjectStore& objects) {
    std::vector<ByteView> parts;
    for (std::uint32_t place = 0; const CrlCell* crl = objects.crl_from(place); ++place) {
        parts.push_back(crl->object->encoded());
    }
    return parts;
}

/// For a response whose CRLs are all older than marks: what is cached, if it has one of them newer.
RetrievalOutcome instead_of_outdated(std::span<const Digest> scopes, ResponsePtr cached,
                                     std::time_t now) {
    const CrlMarks seen(CacheFolder::instance());
    ResponsePtr current = current_part(std::move(cached), seen, now).response;
    const bool has_newer =
        current != nullptr && std::ranges::any_of(current->marks, [scopes](const CrlMark& mark) {
            return std::ranges::find(scopes, mark.scope) != scopes.end();
        });
    return has_newer ? RetrievalOutcome{ERROR_SUCCESS, std::move(current)}
                     : RetrievalOutcome{ERROR_INVALID_DATA, nullptr};
}

/// Has a server's response take the place of what is cached, as far as it is not outdated.
RetrievalOutcome accept(ObjectKind kind, const std::string& url, FetchedResponse fetched) {
    CacheEntry entry;
    entry.kind = kind;
    entry.url = url;
    entry.validators = std::move(fetched.validators);
    std::ranges::transform(fetched.parts, std::back_inserter(entry.parts), view_of);
    entry.content_digest = content_digest(entry.parts);
    CachedResponses& cache = CachedResponses::instance();
    const ResponsePtr cached = cache.find(kind, url);
    const bool same = cached != nullptr && cached->content_digest == entry.content_digest;
    Ref<ObjectStore> objects = same ? cached->objects : read_objects_of(kind, entry.parts);
    if (!objects) {
        return {CRYPT_E_NO_MATCH, nullptr};
    }
    const std::time_t now = std::time(nullptr);
    const CrlMarks seen(CacheFolder::instance());
    CurrentCrls current = current_crls(objects, marks_of(*objects), seen, now);
    if (!current.objects) {
        return instead_of_outdated(current.outdated_scopes, cached, now);
    }
    seen.note_served(current.marks, now);
    if (!current.complete) {
        entry.parts = parts_of(*current.objects);
        entry.content_digest = content_digest(entry.parts);
    }
    if (cached != nullptr && cached->content_digest == entry.content_digest &&
        cached->validators == entry.validators) {
        return {ERROR_SUCCESS, cached};
    }
    entry.received = now;
    auto accepted =
        std::make_shared<const Response>(Response{.objects = std::move(current.objects),
                                                  .marks = std::move(current.marks),
                                                  .validators = entry.validators,
                                                  .content_digest = entry.content_digest,
                                                  .received = now});
    cache.keep(entry, accepted);
    return {ERROR_SUCCESS, std::move(accepted)};
}

/// The answer when a server says that what is cached is still the right response.
RetrievalOutcome confirm(ResponsePtr cached) {
    const std::time_t now = std::time(nullptr);
    const CrlMarks seen(CacheFolder::instance());
    ResponsePtr current = current_part(std::move(cached), seen, now).response;
    if (current == nullptr) {
        return {ERROR_INVALID_DATA, nullptr};
    }
    seen.note_served(current->marks, now);
    return {.response = std::move(current), .confirmed = true};
}

std::uint64_t size_limit(ObjectKind kind) {
    const Configuration& settings = configuration();
    return std::min<std::uint64_t>(kind == ObjectKind::certificate
                                       ? settings.certificate_limit_bytes
                                       : settings.response_limit_bytes,
                                   max_input_length);
}

RetrievalOutcome retrieve_from_server(UrlScheme scheme, ObjectKind kind, const std::string& url,
                                      const Deadline& deadline) {
    const ResponsePtr cached = CachedResponses::instance().find(kind, url);
    FetchOutcome outcome =
        fetch(scheme, {.url = url,
                       .kind = kind,
                       .known = cached == nullptr ? Validators() : cached->validators,
                       .deadline = deadline,
                       .size_limit = size_limit(kind),
                       .settings = configuration()});
    if (const auto* const failure = std::get_if<FetchFailure>(&outcome)) {
        return {failure->error, nullptr, failure->cause};
    }
    if (std::holds_alternative<NotModified>(outcome)) {
        return confirm(cached);
    }
    return accept(kind, url, std::get<FetchedResponse>(std::move(outcome)));
}

/// Asks a server, unless that has failed lately.
RetrievalOutcome retrieve_in_time(UrlScheme scheme, ObjectKind kind, const std::string& url,
                                  std::chrono::milliseconds timeout) {
    using Clock = Deadline::Clock;
    const std::string key = retrieval_key(kind, url);
    FailedRetrievals& failures = FailedRetrievals::instance();
    if (const auto error = failures.find(key, timeout, Clock::now())) {
        return {.error = *error, .remembered = true};
    }
    RetrievalOutcome outcome =
        share_flight(key, Clock::now() + timeout, [scheme, kind, url](const Deadline& deadline) {
            return retrieve_from_server(scheme, kind, url, deadline);
        });
    if (outcome.response != nullptr) {
        failures.forget(key);
    } else if (scheme != UrlScheme::file) {
        failures.remember(key, outcome.error, timeout, Clock::now(),
                          configuration().failure_memory);
    }
    return outcome;
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
    if (*scheme != UrlScheme::file && !names_host(url)) {
        return {ERROR_INTERNET_INVALID_URL, nullptr};
    }
    if ((flags & CRYPT_CACHE_ONLY_RETRIEVAL) != 0) {
        ResponsePtr cached =
            CachedResponses::instance().find_current(kind, url, std::time(nullptr));
        return {cached == nullptr ? CRYPT_E_NOT_FOUND : ERROR_SUCCESS, std::move(cached)};
    }
    std::chrono::milliseconds timeout{timeout_ms};
    if (timeout.count() == 0) {
        timeout = configuration().retrieval_timeout;
    }
    if (timeout.count() == 0) {
        timeout = fallback_timeout;
    }
    return retrieve_in_time(*scheme, kind, std::string(url), timeout);
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
    return norvane::guarded({.other = ERROR_INTERNAL_ERROR}, [&]() -> BOOL {
        norvane::ToldRetrieval told(pszUrl, kind, dwRetrievalFlags, dwTimeout);
        const auto outcome = norvane::outcome_of([&] {
            auto answer = norvane::answer_of_source(pszUrl, kind, dwRetrievalFlags, dwTimeout);
            return answer ? std::move(*answer)
                          : norvane::retrieve(pszUrl, kind, dwRetrievalFlags, dwTimeout);
        });
        told.end(outcome, kind);
        if (outcome.response == nullptr) {
            return norvane::fail(outcome.error);
        }
        *ppvObject = norvane::hand_out(*outcome.response->objects, kind, dwRetrievalFlags);
        return TRUE;
    });
}
