// An HTTP server on loopback that also does what no server should.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace norvane::testing {

struct HttpRequest {
    std::string method;
    std::string target;
    std::map<std::string, std::string> headers; // names in small letters
};

// What the server sends, as it stands: nothing is added that is not said here.
struct HttpReply {
    std::string bytes;                             // the whole response
    std::string endless = {};                      // sent behind it, over and over
    std::chrono::milliseconds before = {};         // the wait before the first byte
    std::size_t chunk = std::string::npos;         // bytes sent at a time,
    std::chrono::milliseconds between_chunks = {}; // and the wait between
    bool hang = false;                             // the connection stays open at the end
};

// A response with a Content-Length. Each header without a line end.
[[nodiscard]] HttpReply http_reply(std::string_view body, std::string_view status = "200 OK",
                                   const std::vector<std::string>& headers = {});
[[nodiscard]] HttpReply http_redirect(std::string_view location);

// Serves 127.0.0.1, each connection in a thread of its own with one request.
class HttpServer {
  public:
    using Handler = std::function<HttpReply(const HttpRequest&)>;

    enum class Accepts { connections, nothing }; // nothing: what listens never answers

    explicit HttpServer(Accepts accepts = Accepts::connections);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    // What a path answers from now on; a path that was never told of answers 404.
    void on(const std::string& path, Handler handler);
    void on(const std::string& path, HttpReply reply);
    // A body with an ETag; a request with that ETag is answered with 304.
    void on_with_etag(const std::string& path, std::string body, std::string etag);

    [[nodiscard]] int port() const;
    // "http://127.0.0.1:PORT" and the path.
    [[nodiscard]] std::string url(std::string_view path) const;
    // The requests for a path up to now.
    [[nodiscard]] std::vector<HttpRequest> requests(const std::string& path) const;
    // The connections that were made up to now.
    [[nodiscard]] std::size_t connections() const;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace norvane::testing
