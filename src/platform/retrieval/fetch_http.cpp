#include "platform/SystemFailure.h"
#include "platform/config/AsciiCase.h"
#include "platform/config/Trim.h"
#include "platform/config/UserFolders.h"
#include "platform/retrieval/Fetch.h"
#include "platform/retrieval/connect_to_host.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <sys/auxv.h>
#include <unistd.h>
#include <utility>
#include <variant>

#include <curl/curl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace norvane {
namespace {

/// Longer validators are not kept.
constexpr std::size_t max_validator_length = 1024;
/// How long at most a transfer goes without a look at the deadline, which others may put off.
constexpr std::chrono::milliseconds longest_wait{1000};
/// libcurl gives up a line of a header that is longer, as if memory had run out.
constexpr std::uint64_t max_header_line_length = 102'400;
constexpr long status_ok = 200;
constexpr long status_not_modified = 304;

template <auto release>
struct CurlReleaser {
    template <class T>
    void operator()(T* object) const noexcept {
        release(object);
    }
};
using EasyHandle = std::unique_ptr<CURL, CurlReleaser<curl_easy_cleanup>>;
using MultiHandle = std::unique_ptr<CURLM, CurlReleaser<curl_multi_cleanup>>;
using Url = std::unique_ptr<CURLU, CurlReleaser<curl_url_cleanup>>;
using CurlText = std::unique_ptr<char, CurlReleaser<curl_free>>;
using HeaderList = std::unique_ptr<curl_slist, CurlReleaser<curl_slist_free_all>>;

struct CurlErrorRow {
    CURLcode code;
    DWORD error;
};
constexpr CurlErrorRow curl_errors[] = {
    {CURLE_URL_MALFORMAT, ERROR_INTERNET_INVALID_URL},
    {CURLE_LOGIN_DENIED, ERROR_INTERNET_INVALID_URL},
    {CURLE_COULDNT_RESOLVE_HOST, ERROR_INTERNET_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_RESOLVE_PROXY, ERROR_INTERNET_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_CONNECT, ERROR_INTERNET_CANNOT_CONNECT},
    {CURLE_PROXY, ERROR_INTERNET_CANNOT_CONNECT},
    {CURLE_OPERATION_TIMEDOUT, ERROR_TIMEOUT},
    {CURLE_FILESIZE_EXCEEDED, ERROR_FILE_TOO_LARGE},
    {CURLE_OUT_OF_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
    {CURLE_FAILED_INIT, ERROR_INTERNAL_ERROR},
    {CURLE_NOT_BUILT_IN, ERROR_INTERNAL_ERROR},
    {CURLE_BAD_FUNCTION_ARGUMENT, ERROR_INTERNAL_ERROR},
    {CURLE_UNKNOWN_OPTION, ERROR_INTERNAL_ERROR},
    {CURLE_ABORTED_BY_CALLBACK, ERROR_INTERNAL_ERROR},
    {CURLE_READ_ERROR, ERROR_INTERNAL_ERROR},
    {CURLE_SSL_CRL_BADFILE, ERROR_INTERNAL_ERROR},
    {CURLE_SSL_ENGINE_INITFAILED, ERROR_INTERNAL_ERROR},
    {CURLE_SSL_CONNECT_ERROR, ERROR_INTERNET_SECURITY_CHANNEL_ERROR},
    {CURLE_PEER_FAILED_VERIFICATION, ERROR_INTERNET_SECURITY_CHANNEL_ERROR},
    {CURLE_SSL_CACERT_BADFILE, ERROR_INTERNET_SECURITY_CHANNEL_ERROR}, // no trusted roots at all
    {CURLE_PARTIAL_FILE, ERROR_INTERNET_CONNECTION_ABORTED},
    {CURLE_GOT_NOTHING, ERROR_INTERNET_CONNECTION_ABORTED},
    {CURLE_RECV_ERROR, ERROR_INTERNET_CONNECTION_ABORTED},
    {CURLE_SEND_ERROR, ERROR_INTERNET_CONNECTION_ABORTED},
    {CURLE_UNSUPPORTED_PROTOCOL, ERROR_INTERNET_CONNECTION_ABORTED}, // a reply without a header
    {CURLE_WEIRD_SERVER_REPLY, ERROR_INTERNET_CONNECTION_ABORTED},
};

/// Whether libcurl could set itself up.
bool start_curl() {
    static std::once_flag once;
    static CURLcode code = CURLE_FAILED_INIT;
    std::call_once(once, [] { code = curl_global_init(CURL_GLOBAL_DEFAULT); });
    return code == CURLE_OK;
}

/// What a transfer has received, in octets of TCP; 0 if the system does not say.
std::uint64_t received_octets(curl_socket_t socket) {
    tcp_info info{};
    socklen_t size = sizeof info;
    const bool known = getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) == 0;
    return known ? info.tcpi_bytes_received : 0;
}

bool is_allowed(std::string_view url, const Configuration& settings) {
    const auto scheme = scheme_of(url);
    const auto& allowed = settings.url_schemes;
    return (scheme == UrlScheme::http || scheme == UrlScheme::https) &&
           std::ranges::find(allowed, name_of(*scheme)) != allowed.end() &&
           has_url_characters(url) && names_host(url);
}

/// A redirection, which is for the caller to follow.
struct Redirection {
    std::string url; ///< empty if it leads nowhere
};
using TransferOutcome = std::variant<FetchOutcome, Redirection>;

/// One request to one server.
class HttpTransfer {
  public:
    HttpTransfer(const FetchRequest& request, const std::string& url)
        : request_(request), url_(url) {
        multi_.reset(curl_multi_init());
        easy_.reset(curl_easy_init());
        if (multi_ == nullptr || easy_ == nullptr) {
            throw std::bad_alloc();
        }
    }
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;
    ~HttpTransfer() { curl_multi_remove_handle(multi_.get(), easy_.get()); }

    [[nodiscard]] TransferOutcome run() {
        set_options();
        if (curl_multi_add_handle(multi_.get(), easy_.get()) != CURLM_OK) {
            return failure(ERROR_INTERNAL_ERROR);
        }
        const std::optional<CURLcode> code = transfer();
        if (failure_ != ERROR_SUCCESS) {
            return failure(failure_);
        }
        if (!code) {
            return failure(ERROR_TIMEOUT);
        }
        // The body of any other answer than a response was not waited for.
        if (*code != CURLE_OK && !(*code == CURLE_WRITE_ERROR && body_is_refused_)) {
            return failure(error_of(*code), cause_of(*code));
        }
        return outcome();
    }

  private:
    template <class Value>
    void set(CURLoption option, Value value) {
        const CURLcode code = curl_easy_setopt(easy_.get(), option, value);
        if (code == CURLE_OUT_OF_MEMORY) {
            throw std::bad_alloc();
        }
    }

    void set_options() {
        set(CURLOPT_URL, url_.c_str());
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        // Redirections are followed with another transfer, after a look at where they lead.
        set(CURLOPT_FOLLOWLOCATION, 0L);
        set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
        set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
        set(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
        set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
        set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_NONE));
        set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_MAXFILESIZE_LARGE,
            static_cast<curl_off_t>(std::min<std::uint64_t>(
                request_.size_limit, std::numeric_limits<curl_off_t>::max())));
        set_proxy();
        set_conditions();
        set(CURLOPT_ERRORBUFFER, error_text_.data());
        set(CURLOPT_WRITEFUNCTION, &HttpTransfer::take_body);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_HEADERFUNCTION, &HttpTransfer::take_header);
        set(CURLOPT_HEADERDATA, this);
        set(CURLOPT_OPENSOCKETFUNCTION, &HttpTransfer::open_socket_for);
        set(CURLOPT_OPENSOCKETDATA, this);
        set(CURLOPT_CLOSESOCKETFUNCTION, &HttpTransfer::close_socket_of);
        set(CURLOPT_CLOSESOCKETDATA, this);
    }

    /// Without one of ours, libcurl takes the proxy of the environment, unless the environment is
    /// not to be trusted.
    void set_proxy() {
        if (!request_.settings.proxy.empty()) {
            set(CURLOPT_PROXY, request_.settings.proxy.c_str());
        } else if (getauxval(AT_SECURE) != 0) {
            set(CURLOPT_PROXY, "");
        }
    }

    void set_conditions() {
        const auto add = [this](const char* name, const std::string& value) {
            if (value.empty()) {
                return;
            }
            curl_slist* const longer =
                curl_slist_append(headers_.get(), (name + (": " + value)).c_str());
            if (longer == nullptr) {
                throw std::bad_alloc();
            }
            static_cast<void>(headers_.release());
            headers_.reset(longer);
        };
        add("If-None-Match", request_.known.etag);
        add("If-Modified-Since", request_.known.last_modified);
        set(CURLOPT_HTTPHEADER, headers_.get());
    }

    /// Nothing if the deadline has passed.
    [[nodiscard]] std::optional<CURLcode> transfer() {
        for (;;) {
            int running = 0;
            if (curl_multi_perform(multi_.get(), &running) != CURLM_OK) {
                return CURLE_OUT_OF_MEMORY;
            }
            int queued = 0;
            if (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &queued)) {
                return message->data.result;
            }
            const auto left = std::min(request_.deadline.remaining(), longest_wait);
            if (left.count() == 0) {
                return std::nullopt;
            }
            curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(left.count()), nullptr);
        }
    }

    [[nodiscard]] static FetchOutcome failure(DWORD error, std::string cause = {}) {
        return FetchFailure{error, std::move(cause)};
    }

    /// libcurl's words about this transfer, or about the code where it has none.
    [[nodiscard]] std::string cause_of(CURLcode code) const {
        return error_text_.front() != '\0' ? error_text_.data() : curl_easy_strerror(code);
    }

    [[nodiscard]] DWORD error_of(CURLcode code) const {
        if (code == CURLE_OUT_OF_MEMORY && received_ > max_header_line_length) {
            return ERROR_INTERNET_CONNECTION_ABORTED;
        }
        const auto* const row = std::ranges::find(curl_errors, code, &CurlErrorRow::code);
        const DWORD error = row == std::end(curl_errors) ? E_FAIL : row->error;
        const DWORD want = is_own_failure(error) ? ERROR_SUCCESS : want_of_sockets();
        return want == ERROR_SUCCESS ? error : want;
    }

    [[nodiscard]] TransferOutcome outcome() {
        if (!location_.empty() && status_ / 100 == 3 && status_ != status_not_modified) {
            return redirection();
        }
        response_.validators.source = url_;
        if (status_ == status_not_modified && request_.known.can_ask()) {
            return FetchOutcome(NotModified{});
        }
        if (status_ != status_ok) {
            return failure(HTTP_E_STATUS_FIRST + static_cast<DWORD>(status_));
        }
        response_.parts.push_back(std::move(body_));
        return FetchOutcome(std::move(response_));
    }

    /// Where the server's `Location` leads from here (RFC 3986 5).
    [[nodiscard]] Redirection redirection() const {
        const Url url(curl_url());
        if (url == nullptr ||
            curl_url_set(url.get(), CURLUPART_URL, url_.c_str(), 0) != CURLUE_OK) {
            throw std::bad_alloc();
        }
        const auto code = curl_url_set(url.get(), CURLUPART_URL, location_.c_str(),
                                       CURLU_NON_SUPPORT_SCHEME | CURLU_URLENCODE);
        char* text = nullptr;
        if (code == CURLUE_OUT_OF_MEMORY ||
            (code == CURLUE_OK &&
             curl_url_get(url.get(), CURLUPART_URL, &text, 0) == CURLUE_OUT_OF_MEMORY)) {
            throw std::bad_alloc();
        }
        const CurlText owned(text);
        return {text == nullptr ? std::string() : text};
    }

    static curl_socket_t open_socket_for(void* context, curlsocktype /*purpose*/,
                                         curl_sockaddr* address) noexcept {
        auto& self = *static_cast<HttpTransfer*>(context);
        const int opened =
            open_socket(address->family, address->socktype, address->protocol, self.failure_);
        return opened < 0 ? CURL_SOCKET_BAD : opened;
    }

    static int close_socket_of(void* context, curl_socket_t socket) noexcept {
        static_cast<HttpTransfer*>(context)->received_ += received_octets(socket);
        return close(socket);
    }

    /// Bytes of the body, and how many of them were taken; fewer end the transfer.
    static std::size_t take_body(const char* data, std::size_t /*one*/, std::size_t count,
                                 void* context) noexcept {
        auto& self = *static_cast<HttpTransfer*>(context);
        if (self.status_ != status_ok) {
            self.body_is_refused_ = true;
            return 0;
        }
        if (count > self.request_.size_limit - self.body_.size()) {
            self.failure_ = ERROR_FILE_TOO_LARGE;
            return 0;
        }
        try {
            self.reserve_body();
            self.body_.append(data, count);
        } catch (const std::bad_alloc&) {
            self.failure_ = ERROR_NOT_ENOUGH_MEMORY;
            return 0;
        }
        return count;
    }

    void reserve_body() {
        if (body_.empty()) {
            curl_off_t length = 0;
            curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
            body_.reserve(static_cast<std::size_t>(std::max<curl_off_t>(length, 0)));
        }
    }

    /// A line of a header. A status line begins the header of another response: that before was a
    /// provisional one.
    static std::size_t take_header(const char* data, std::size_t /*one*/, std::size_t count,
                                   void* context) noexcept {
        auto& self = *static_cast<HttpTransfer*>(context);
        const std::string_view line(data, count);
        try {
            if (line.starts_with("HTTP/")) {
                self.response_.validators = {};
                self.location_.clear();
                curl_easy_getinfo(self.easy_.get(), CURLINFO_RESPONSE_CODE, &self.status_);
            }
            self.take_location(line);
            self.take_validator(line, "ETag", self.response_.validators.etag);
            self.take_validator(line, "Last-Modified", self.response_.validators.last_modified);
        } catch (const std::bad_alloc&) {
            self.failure_ = ERROR_NOT_ENOUGH_MEMORY;
            return 0;
        }
        return count;
    }

    /// The value in a line of this name; nothing in any other line.
    static std::optional<std::string_view> value_in(std::string_view line, std::string_view name) {
        const std::size_t colon = line.find(':');
        if (colon == line.npos || !equal_ignoring_case(line.substr(0, colon), name)) {
            return std::nullopt;
        }
        line.remove_prefix(colon + 1);
        return trim(line.substr(0, line.find('\n')));
    }

    static void take_validator(std::string_view line, std::string_view name, std::string& out) {
        if (const auto value = value_in(line, name)) {
            const bool printable =
                std::ranges::all_of(*value, [](char c) { return c >= ' ' && c <= '~'; });
            out = printable && value->size() <= max_validator_length ? *value : std::string_view();
        }
    }

    void take_location(std::string_view line) {
        if (const auto value = value_in(line, "Location")) {
            location_ = *value;
        }
    }

    const FetchRequest& request_;
    const std::string& url_;
    HeaderList headers_;
    EasyHandle easy_;
    MultiHandle multi_;
    long status_ = 0;
    std::string location_;
    bool body_is_refused_ = false;
    std::uint64_t received_ = 0; ///< octets, by the connections that are closed
    std::string body_;
    FetchedResponse response_;
    DWORD failure_ = ERROR_SUCCESS; ///< why a callback ended the transfer
    std::array<char, CURL_ERROR_SIZE> error_text_{};
};

/// A response with the URL that it came from, behind all redirections.
struct Followed {
    FetchOutcome outcome;
    std::string source;
};

Followed follow(const FetchRequest& request) {
    std::string url = request.url;
    for (std::uint32_t hops = 0;; ++hops) {
        TransferOutcome outcome = HttpTransfer(request, url).run();
        if (auto* const fetched = std::get_if<FetchOutcome>(&outcome)) {
            return {std::move(*fetched), std::move(url)};
        }
        url = std::get<Redirection>(outcome).url;
        if (hops == request.settings.max_redirects || !is_allowed(url, request.settings)) {
            return {FetchFailure{ERROR_HTTP_REDIRECT_FAILED}, {}};
        }
    }
}

} // namespace

FetchOutcome fetch_http(const FetchRequest& request) {
    if (!start_curl()) {
        return FetchFailure{ERROR_INTERNAL_ERROR};
    }
    Followed followed = follow(request);
    if (!std::holds_alternative<NotModified>(followed.outcome) ||
        followed.source == request.known.source) {
        return std::move(followed.outcome);
    }
    // A redirection leads elsewhere than before; that the resource there has not changed says
    // nothing about the one that we know.
    FetchRequest unconditional = request;
    unconditional.known = {};
    return follow(unconditional).outcome;
}

} // namespace norvane
