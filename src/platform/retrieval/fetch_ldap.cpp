#include "platform/retrieval/Fetch.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <sys/time.h>
#include <vector>

#include <ldap.h>

namespace norvane {
namespace {

template <auto release>
struct LdapReleaser {
    template <class T>
    void operator()(T* object) const noexcept {
        release(object);
    }
};
void end_session(LDAP* session) noexcept { ldap_unbind_ext(session, nullptr, nullptr); }
void free_result(LDAPMessage* message) noexcept { ldap_msgfree(message); }
void free_element(BerElement* element) noexcept { ber_free(element, 0); }

using Description = std::unique_ptr<LDAPURLDesc, LdapReleaser<ldap_free_urldesc>>;
using Session = std::unique_ptr<LDAP, LdapReleaser<end_session>>;
using Message = std::unique_ptr<LDAPMessage, LdapReleaser<free_result>>;
using Element = std::unique_ptr<BerElement, LdapReleaser<free_element>>;
using Name = std::unique_ptr<char, LdapReleaser<ldap_memfree>>;
using Values = std::unique_ptr<berval*, LdapReleaser<ldap_value_free_len>>;

/// Where RFC 4523 2 keeps certificates and CRLs; the values travel in their binary encoding.
constexpr std::array certificate_attributes = {"cACertificate;binary", "userCertificate;binary"};
constexpr std::array crl_attributes = {"certificateRevocationList;binary",
                                       "authorityRevocationList;binary",
                                       "deltaRevocationList;binary"};

struct ErrorRow {
    int code;
    DWORD error;
};
constexpr ErrorRow errors[] = {
    {LDAP_NO_SUCH_OBJECT, CRYPT_E_NOT_FOUND},
    {LDAP_NO_SUCH_ATTRIBUTE, CRYPT_E_NOT_FOUND},
    {LDAP_REFERRAL, CRYPT_E_NOT_FOUND},
    {LDAP_INSUFFICIENT_ACCESS, ERROR_ACCESS_DENIED},
    {LDAP_INAPPROPRIATE_AUTH, ERROR_ACCESS_DENIED},
    {LDAP_STRONG_AUTH_REQUIRED, ERROR_ACCESS_DENIED},
    {LDAP_CONFIDENTIALITY_REQUIRED, ERROR_ACCESS_DENIED},
    {LDAP_INVALID_DN_SYNTAX, ERROR_INTERNET_INVALID_URL},
    {LDAP_FILTER_ERROR, ERROR_INTERNET_INVALID_URL},
    {LDAP_SERVER_DOWN, ERROR_INTERNET_CANNOT_CONNECT},
    {LDAP_CONNECT_ERROR, ERROR_INTERNET_CANNOT_CONNECT},
    {LDAP_TIMEOUT, ERROR_TIMEOUT},
    {LDAP_TIMELIMIT_EXCEEDED, ERROR_TIMEOUT},
    {LDAP_NO_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
};

FetchFailure failure_of(int code) {
    const auto* const row = std::ranges::find(errors, code, &ErrorRow::code);
    return {row == std::end(errors) ? E_FAIL : row->error};
}

timeval to_timeval(std::chrono::milliseconds time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    return {.tv_sec = seconds.count(),
            .tv_usec = std::chrono::microseconds(time - seconds).count()};
}

/// libldap sets itself up at its first call, and does not keep other threads out meanwhile.
void start_libldap() {
    static std::once_flag once;
    std::call_once(once, [] {
        int level = 0;
        ldap_get_option(nullptr, LDAP_OPT_DEBUG_LEVEL, &level);
    });
}

/// One search without a bind, which makes it an anonymous one (RFC 4511 4.2).
class LdapSearch {
  public:
    explicit LdapSearch(const FetchRequest& request) : request_(request) {}

    [[nodiscard]] FetchOutcome run() {
        LDAPURLDesc* parsed = nullptr;
        if (ldap_url_parse(request_.url.c_str(), &parsed) != LDAP_URL_SUCCESS) {
            return FetchFailure{ERROR_INTERNET_INVALID_URL};
        }
        url_.reset(parsed);
        if (url_->lud_host == nullptr || *url_->lud_host == '\0' || url_->lud_crit_exts != 0) {
            return FetchFailure{ERROR_INTERNET_INVALID_URL};
        }
        if (const int code = open(); code != LDAP_SUCCESS) {
            return failure_of(code);
        }
        if (const int code = send(); code != LDAP_SUCCESS) {
            return failure_of(request_.deadline.has_passed() ? LDAP_TIMEOUT : code);
        }
        return receive();
    }

  private:
    [[nodiscard]] int open() {
        // Only scheme, host and port: the rest of the URL is for the search.
        const std::string_view scheme = url_->lud_scheme;
        const std::string_view host = url_->lud_host;
        const bool is_address = host.find(':') != host.npos;
        std::string server(scheme);
        server.append(is_address ? "://[" : "://").append(host).append(is_address ? "]:" : ":");
        server.append(std::to_string(url_->lud_port));
        LDAP* opened = nullptr;
        if (const int code = ldap_initialize(&opened, server.c_str()); code != LDAP_SUCCESS) {
            return code;
        }
        session_.reset(opened);
        set(LDAP_OPT_PROTOCOL_VERSION, LDAP_VERSION3);
        set(LDAP_OPT_X_TLS_REQUIRE_CERT, LDAP_OPT_X_TLS_DEMAND);
        set(LDAP_OPT_X_TLS_NEWCTX, 0);
        ldap_set_option(opened, LDAP_OPT_REFERRALS, LDAP_OPT_OFF);
        ldap_set_option(opened, LDAP_OPT_RESTART, LDAP_OPT_OFF);
        const timeval network = to_timeval(request_.deadline.remaining());
        ldap_set_option(opened, LDAP_OPT_NETWORK_TIMEOUT, &network);
        Sockbuf* buffer = nullptr;
        ber_len_t limit = request_.size_limit + message_overhead;
        if (ldap_get_option(opened, LDAP_OPT_SOCKBUF, &buffer) != LDAP_OPT_SUCCESS ||
            ber_sockbuf_ctrl(buffer, LBER_SB_OPT_SET_MAX_INCOMING, &limit) < 0) {
            return LDAP_LOCAL_ERROR;
        }
        return LDAP_SUCCESS;
    }

    void set(int option, int value) { ldap_set_option(session_.get(), option, &value); }

    /// Connects and sends. The look-up of the server's name may take longer than the deadline.
    [[nodiscard]] int send() {
        std::vector<char*> attributes = wanted_attributes();
        timeval limit = to_timeval(request_.deadline.remaining());
        return ldap_search_ext(session_.get(), url_->lud_dn, url_->lud_scope, url_->lud_filter,
                               attributes.data(), 0, nullptr, nullptr, &limit, LDAP_NO_LIMIT,
                               &message_id_);
    }

    /// With a null at the end. libldap does not write to the names.
    [[nodiscard]] std::vector<char*> wanted_attributes() const {
        std::vector<char*> names;
        if (url_->lud_attrs != nullptr) {
            for (char** name = url_->lud_attrs; *name != nullptr; ++name) {
                names.push_back(*name);
            }
        } else if (request_.kind == ObjectKind::crl) {
            for (const char* name : crl_attributes) {
                names.push_back(const_cast<char*>(name));
            }
        } else {
            for (const char* name : certificate_attributes) {
                names.push_back(const_cast<char*>(name));
            }
        }
        names.push_back(nullptr);
        return names;
    }

    [[nodiscard]] FetchOutcome receive() {
        for (;;) {
            timeval limit = to_timeval(request_.deadline.remaining());
            if (limit.tv_sec == 0 && limit.tv_usec == 0) {
                return FetchFailure{ERROR_TIMEOUT};
            }
            LDAPMessage* received = nullptr;
            const int type =
                ldap_result(session_.get(), message_id_, LDAP_MSG_ONE, &limit, &received);
            const Message message(received);
            if (type == 0) {
                continue;
            }
            if (type < 0) {
                return FetchFailure{ERROR_INTERNET_CONNECTION_ABORTED};
            }
            if (type == LDAP_RES_SEARCH_RESULT) {
                return finish(message.get());
            }
            if (type == LDAP_RES_SEARCH_ENTRY && !take_entry(message.get())) {
                return FetchFailure{ERROR_FILE_TOO_LARGE};
            }
        }
    }

    [[nodiscard]] FetchOutcome finish(LDAPMessage* message) {
        int code = LDAP_OTHER;
        if (ldap_parse_result(session_.get(), message, &code, nullptr, nullptr, nullptr, nullptr,
                              0) != LDAP_SUCCESS) {
            return FetchFailure{ERROR_INTERNET_CONNECTION_ABORTED};
        }
        if (code != LDAP_SUCCESS) {
            return failure_of(code);
        }
        if (response_.parts.empty()) {
            return FetchFailure{CRYPT_E_NOT_FOUND};
        }
        return std::move(response_);
    }

    /// All values of all attributes. False if they exceed the limit.
    [[nodiscard]] bool take_entry(LDAPMessage* entry) {
        BerElement* position = nullptr;
        Name name(ldap_first_attribute(session_.get(), entry, &position));
        const Element element(position);
        while (name != nullptr) {
            const Values values(ldap_get_values_len(session_.get(), entry, name.get()));
            for (berval** value = values.get(); value != nullptr && *value != nullptr; ++value) {
                const berval& octets = **value;
                if (octets.bv_len > request_.size_limit - size_) {
                    return false;
                }
                size_ += octets.bv_len;
                response_.parts.emplace_back(octets.bv_val, octets.bv_len);
            }
            name.reset(ldap_next_attribute(session_.get(), entry, element.get()));
        }
        return true;
    }

    /// What a message has beside the values: names, tags and lengths.
    static constexpr ber_len_t message_overhead = 65'536;

    const FetchRequest& request_;
    Description url_;
    Session session_;
    int message_id_ = 0;
    std::uint64_t size_ = 0;
    FetchedResponse response_;
};

} // namespace

FetchOutcome fetch_ldap(const FetchRequest& request) {
    start_libldap();
    return LdapSearch(request).run();
}

} // namespace norvane
