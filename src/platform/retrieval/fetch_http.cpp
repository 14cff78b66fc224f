#include "platform/config/AsciiCase.h"
#include "platform/config/Trim.h"
#include "platform/config/UserFolders.h"
#include "platform/retrieval/Fetch.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <sys/auxv.h>
#include <utility>

#include <curl/curl.h>

namespace norvane {
namespace {

/// Longer validators are not kept.
constexpr std::size_t max_validator_length = 1024;
/// How long at most a transfer goes without a look at the deadline, which others may put off.
constexpr std::chrono::milliseconds longest_wait{1000};
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
using HeaderList = std::unique_ptr<curl_slist, CurlReleaser<curl_slist_free_all>>;

struct ErrorRow {
    CURLcode code;
    DWORD error;
};
constexpr ErrorRow errors[] = {
    {CURLE_URL_MALFORMAT, ERROR_INTERNET_INVALID_URL},
    {CURLE_LOGIN_DENIED, ERROR_INTERNET_INVALID_URL},
    {CURLE_COULDNT_RESOLVE_HOST, ERROR_INTERNET_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_RESOLVE_PROXY, ERROR_INTERNET_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_CONNECT, ERROR_INTERNET_CANNOT_CONNECT},
    {CURLE_PROXY, ERROR_INTERNET_CANNOT_CONNECT},
    {CURLE_OPERATION_TIMEDOUT, ERROR_TIMEOUT},
    {CURLE_TOO_MANY_REDIRECTS, ERROR_HTTP_REDIRECT_FAILED},
    {CURLE_FILESIZE_EXCEEDED, ERROR_FILE_TOO_LARGE},
    {CURLE_OUT_OF_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
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

void start_curl() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

/// The schemes out of http and https that the configuration allows, as curl takes them.
std::string allowed_schemes(const Configuration& settings) {
    std::string list;
    for (const UrlScheme scheme : {UrlScheme::http, UrlScheme::https}) {
        const auto& allowed = settings.url_schemes;
        if (std::ranges::find(allowed, name_of(scheme)) != allowed.end()) {
            list.append(list.empty() ? "" : ",").append(name_of(scheme));
        }
    }
    return list;
}

/// One request with all its redirections.
class HttpTransfer {
  public:
    explicit HttpTransfer(const FetchRequest& request) : request_(request) {
        start_curl();
        multi_.reset(curl_multi_init());
        easy_.reset(curl_easy_init());
        if (multi_ == nullptr || easy_ == nullptr) {
            throw std::bad_alloc();
        }
    }
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;
    ~HttpTransfer() { curl_multi_remove_handle(multi_.get(), easy_.get()); }

    [[nodiscard]] FetchOutcome run() {
        set_options();
        curl_multi_add_handle(multi_.get(), easy_.get());
        const std::optional<CURLcode> code = transfer();
        if (failure_ != ERROR_SUCCESS || !code) {
            return FetchFailure{code ? failure_ : ERROR_TIMEOUT};
        }
        if (*code != CURLE_OK) {
            return FetchFailure{error_of(*code)};
        }
        return outcome();
    }

    /// The URL that was asked at last, behind all redirections.
    [[nodiscard]] const std::string& source() const { return response_.validators.source; }

  private:
    template <class Value>
    void set(CURLoption option, Value value) {
        const CURLcode code = curl_easy_setopt(easy_.get(), option, value);
        if (code == CURLE_OUT_OF_MEMORY) {
            throw std::bad_alloc();
        }
    }

    void set_options() {
        const std::string schemes = allowed_schemes(request_.settings);
        set(CURLOPT_URL, request_.url.c_str());
        set(CURLOPT_PROTOCOLS_STR, schemes.c_str());
        set(CURLOPT_REDIR_PROTOCOLS_STR, schemes.c_str());
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_MAXREDIRS, static_cast<long>(request_.settings.max_redirects));
        set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
        set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
        set(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
        set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
        set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_NONE));
        set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
        set(CURLOPT_NOSIGNAL, 1L);
        // A look-up of a name that hangs is left behind, not waited for.
        set(CURLOPT_QUICK_EXIT, 1L);
        set(CURLOPT_MAXFILESIZE_LARGE,
            static_cast<curl_off_t>(std::min<std::uint64_t>(
                request_.size_limit, std::numeric_limits<curl_off_t>::max())));
        set_proxy();
        set_conditions();
        set(CURLOPT_WRITEFUNCTION, &HttpTransfer::take_body);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_HEADERFUNCTION, &HttpTransfer::take_header);
        set(CURLOPT_HEADERDATA, this);
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

    [[nodiscard]] DWORD error_of(CURLcode code) const {
        long redirects = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_REDIRECT_COUNT, &redirects);
        if (redirects != 0 && (code == CURLE_UNSUPPORTED_PROTOCOL || code == CURLE_URL_MALFORMAT)) {
            return ERROR_HTTP_REDIRECT_FAILED;
        }
        const auto* const row = std::ranges::find(errors, code, &ErrorRow::code);
        return row == std::end(errors) ? E_FAIL : row->error;
    }

    [[nodiscard]] FetchOutcome outcome() {
        long status = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
        const char* source = nullptr;
        curl_easy_getinfo(easy_.get(), CURLINFO_EFFECTIVE_URL, &source);
        response_.validators.source = source == nullptr ? "" : source;
        if (status == status_not_modified && request_.known.can_ask()) {
            return NotModified{};
        }
        if (status != status_ok) {
            return FetchFailure{HTTP_E_STATUS_FIRST + static_cast<DWORD>(status)};
        }
        response_.parts.push_back(std::move(body_));
        return std::move(response_);
    }

    /// Bytes of the body, and how many of them were taken; fewer end the transfer.
    static std::size_t take_body(const char* data, std::size_t /*one*/, std::size_t count,
                                 void* context) noexcept {
        auto& self = *static_cast<HttpTransfer*>(context);
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
    /// redirection.
    static std::size_t take_header(const char* data, std::size_t /*one*/, std::size_t count,
                                   void* context) noexcept {
        auto& self = *static_cast<HttpTransfer*>(context);
        const std::string_view line(data, count);
        try {
            if (line.starts_with("HTTP/")) {
                self.response_.validators = {};
            }
            self.take_validator(line, "ETag", self.response_.validators.etag);
            self.take_validator(line, "Last-Modified", self.response_.validators.last_modified);
        } catch (const std::bad_alloc&) {
            self.failure_ = ERROR_NOT_ENOUGH_MEMORY;
            return 0;
        }
        return count;
    }

    static void take_validator(std::string_view line, std::string_view name, std::string& out) {
        const std::size_t colon = line.find(':');
        if (colon == line.npos || !equal_ignoring_case(line.substr(0, colon), name)) {
            return;
        }
        line.remove_prefix(colon + 1);
        const std::string_view value = trim(line.substr(0, line.find('\n')));
        const bool printable =
            std::ranges::all_of(value, [](char c) { return c >= ' ' && c <= '~'; });
        out = printable && value.size() <= max_validator_length ? value : std::string_view();
    }

    const FetchRequest& request_;
    HeaderList headers_;
    EasyHandle easy_;
    MultiHandle multi_;
    std::string body_;
    FetchedResponse response_;
    DWORD failure_ = ERROR_SUCCESS; ///< why a callback ended the transfer
};

} // namespace

FetchOutcome fetch_http(const FetchRequest& request) {
    HttpTransfer transfer(request);
    FetchOutcome outcome = transfer.run();
    if (!std::holds_alternative<NotModified>(outcome) ||
        transfer.source() == request.known.source) {
        return outcome;
    }
    // A redirection leads elsewhere than before; that the resource there has not changed says
    // nothing about the one that we know.
    FetchRequest unconditional = request;
    unconditional.known = {};
    return HttpTransfer(unconditional).run();
}

} // namespace norvane
