#include "platform/retrieval/Fetch.h"
#include "platform/retrieval/ShutdownAtDeadline.h"
#include "platform/retrieval/connect_to_host.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <sys/socket.h>
#include <sys/time.h>
#include <system_error>
#include <vector>

#include <ldap.h>
#include <openldap.h>

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

struct LdapErrorRow {
    int code;
    DWORD error;
};
constexpr LdapErrorRow ldap_errors[] = {
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
    {LDAP_LOCAL_ERROR, ERROR_INTERNAL_ERROR},
    {LDAP_ENCODING_ERROR, ERROR_INTERNAL_ERROR},
    {LDAP_PARAM_ERROR, ERROR_INTERNAL_ERROR},
    {LDAP_NOT_SUPPORTED, ERROR_INTERNAL_ERROR},
};

FetchFailure failure_of(int code) {
    const auto* const row = std::ranges::find(ldap_errors, code, &LdapErrorRow::code);
    return {row == std::end(ldap_errors) ? E_FAIL : row->error, ldap_err2string(code)};
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

bool is_control(unsigned char c) {
    constexpr unsigned char first_printable = 0x20;
    constexpr unsigned char delete_character = 0x7f;
    return c < first_printable || c == delete_character;
}

/// Whether a text, with the percent signs decoded, would put control characters on the wire, where
/// servers of other protocols take them for the end of a line. In filters libldap decodes \XX too
/// (RFC 4515 3).
bool has_control(const char* text) {
    const std::string_view all = text == nullptr ? "" : text;
    if (std::ranges::any_of(all, is_control)) {
        return true;
    }
    for (std::size_t at = all.find('\\'); at != all.npos; at = all.find('\\', at + 1)) {
        unsigned char octet = 0;
        const std::string_view number = all.substr(at + 1, 2);
        const char* const end = number.data() + number.size();
        if (std::from_chars(number.data(), end, octet, 16).ptr == end && number.size() == 2 &&
            is_control(octet)) {
            return true;
        }
    }
    return false;
}

/// One search without a bind, which makes it an anonymous one (RFC 4511 4.2).
class LdapSearch {
  public:
    explicit LdapSearch(const FetchRequest& request) : request_(request) {}
    LdapSearch(const LdapSearch&) = delete;
    LdapSearch& operator=(const LdapSearch&) = delete;
    /// So that the end of the session waits for nothing.
    ~LdapSearch() {
        if (session_ != nullptr) {
            shutdown(socket_, SHUT_RDWR);
        }
    }

    [[nodiscard]] FetchOutcome run() {
        LDAPURLDesc* parsed = nullptr;
        if (const int code = ldap_url_parse(request_.url.c_str(), &parsed);
            code != LDAP_URL_SUCCESS) {
            return FetchFailure{code == LDAP_URL_ERR_MEM ? ERROR_NOT_ENOUGH_MEMORY
                                                         : ERROR_INTERNET_INVALID_URL};
        }
        url_.reset(parsed);
        if (!says_what_it_names()) {
            return FetchFailure{ERROR_INTERNET_INVALID_URL};
        }
        const auto connected = connect_to_host(url_->lud_host, url_->lud_port, request_.deadline);
        if (const auto* const error = std::get_if<DWORD>(&connected)) {
            return FetchFailure{*error};
        }
        socket_ = std::get<int>(connected);
        for (const auto step : {&LdapSearch::open, &LdapSearch::send}) {
            if (const int code = (this->*step)(); code != LDAP_SUCCESS) {
                return failure_of(request_.deadline.has_passed() ? LDAP_TIMEOUT : code);
            }
        }
        return receive();
    }

  private:
    /// Whether libldap has read out of the URL what stands in it.
    [[nodiscard]] bool says_what_it_names() const {
        constexpr int max_port = 65'535;
        if (url_->lud_host == nullptr || !is_host(url_->lud_host) || url_->lud_port <= 0 ||
            url_->lud_port > max_port || url_->lud_crit_exts != 0 || has_control(url_->lud_dn) ||
            has_control(url_->lud_filter)) {
            return false;
        }
        for (char** name = url_->lud_attrs; name != nullptr && *name != nullptr; ++name) {
            if (has_control(*name)) {
                return false;
            }
        }
        return true;
    }

    /// Makes a session of the connection.
    [[nodiscard]] int open() {
        // Only scheme and host, for the certificate of the server: the rest is for the search.
        const std::string_view host = url_->lud_host;
        const bool is_address = host.find(':') != host.npos;
        std::string server(url_->lud_scheme);
        server.append(is_address ? "://[" : "://").append(host).append(is_address ? "]" : "");
        LDAP* opened = nullptr;
        if (const int code = ldap_init_fd(socket_, LDAP_PROTO_TCP, server.c_str(), &opened);
            code != LDAP_SUCCESS) {
            close(socket_);
            return code;
        }
        session_.reset(opened);
        set(LDAP_OPT_PROTOCOL_VERSION, LDAP_VERSION3);
        ldap_set_option(opened, LDAP_OPT_REFERRALS, LDAP_OPT_OFF);
        ldap_set_option(opened, LDAP_OPT_RESTART, LDAP_OPT_OFF);
        Sockbuf* buffer = nullptr;
        ber_len_t limit = request_.size_limit + message_overhead;
        if (ldap_get_option(opened, LDAP_OPT_SOCKBUF, &buffer) != LDAP_OPT_SUCCESS ||
            ber_sockbuf_ctrl(buffer, LBER_SB_OPT_SET_MAX_INCOMING, &limit) < 0) {
            return LDAP_LOCAL_ERROR;
        }
        return url_->lud_scheme == name_of(UrlScheme::ldaps) ? start_tls() : LDAP_SUCCESS;
    }

    /// libldap keeps to no time here: it spins on a socket that does not block.
    [[nodiscard]] int start_tls() {
        set(LDAP_OPT_X_TLS_REQUIRE_CERT, LDAP_OPT_X_TLS_DEMAND);
        for (const int option : {LDAP_OPT_X_TLS_CACERTFILE, LDAP_OPT_X_TLS_CACERTDIR}) {
            // A session does not inherit what ldap.conf and the environment say.
            char* path = nullptr;
            ldap_get_option(nullptr, option, &path);
            const Name owned(path);
            if (path != nullptr) {
                ldap_set_option(session_.get(), option, path);
            }
        }
        set(LDAP_OPT_X_TLS_NEWCTX, 0);
        const int flags = fcntl(socket_, F_GETFL);
        if (flags < 0 || fcntl(socket_, F_SETFL, flags & ~O_NONBLOCK) != 0) {
            return LDAP_LOCAL_ERROR;
        }
        const ShutdownAtDeadline limit(socket_, request_.deadline);
        const int code = ldap_install_tls(session_.get());
        return fcntl(socket_, F_SETFL, flags) == 0 ? code : LDAP_LOCAL_ERROR;
    }

    void set(int option, int value) { ldap_set_option(session_.get(), option, &value); }

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
                require_memory();
                return FetchFailure{ERROR_INTERNET_CONNECTION_ABORTED};
            }
            if (type == LDAP_RES_SEARCH_RESULT) {
                return finish(message.get());
            }
            if (type == LDAP_RES_SEARCH_ENTRY) {
                if (!take_entry(message.get())) {
                    return FetchFailure{ERROR_FILE_TOO_LARGE};
                }
                require_memory();
            }
        }
    }

    /// What libldap could not read for want of memory is not what the server has not.
    void require_memory() const {
        int code = LDAP_SUCCESS;
        ldap_get_option(session_.get(), LDAP_OPT_RESULT_CODE, &code);
        if (code == LDAP_NO_MEMORY) {
            throw std::bad_alloc();
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
            return FetchFailure{CRYPT_E_NOT_FOUND, "no value of the attributes asked for"};
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
    int socket_ = -1; ///< the session's, once there is one
    Session session_;
    int message_id_ = 0;
    std::uint64_t size_ = 0;
    FetchedResponse response_;
};

} // namespace

FetchOutcome fetch_ldap(const FetchRequest& request) {
    start_libldap();
    try {
        return LdapSearch(request).run();
    } catch (const std::system_error&) {
        return FetchFailure{ERROR_NO_SYSTEM_RESOURCES};
    }
}

} // namespace norvane
