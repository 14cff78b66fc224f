#include "support/HttpServer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cctype>
#include <condition_variable>
#include <list>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace norvane::testing {

struct HttpServer::State {
    int listener = -1;
    int port = 0;
    mutable std::mutex mutex;
    std::condition_variable stop_told;
    bool stopped = false;
    std::map<std::string, Handler> handlers;
    std::vector<HttpRequest> requests;
    std::size_t connections = 0;
    std::list<std::thread> threads;

    // False if the server stops in the meantime.
    bool wait(std::chrono::milliseconds time) {
        std::unique_lock lock(mutex);
        return !stop_told.wait_for(lock, time, [this] { return stopped; });
    }
    bool send_bytes(int connection, std::string_view bytes, const HttpReply& reply);
    void answer(int connection);
    void accept_all();
};

namespace {

// The header of a request, or what has come of it when the client ends.
std::string read_header(int connection) {
    std::string text;
    char octet = 0;
    constexpr char tls_handshake = 0x16;
    while (!text.ends_with("\r\n\r\n") && octet != tls_handshake &&
           recv(connection, &octet, 1, 0) == 1)
        text += octet;
    return text;
}

std::string take_line(std::string& text) {
    const std::size_t end = std::min(text.find("\r\n"), text.size());
    std::string line = text.substr(0, end);
    text.erase(0, end + 2);
    return line;
}

HttpRequest parse(std::string text) {
    HttpRequest request;
    const std::string first = take_line(text);
    const std::size_t space = first.find(' ');
    request.method = first.substr(0, space);
    request.target = first.substr(space + 1, first.rfind(' ') - space - 1);
    for (std::string line = take_line(text); !line.empty(); line = take_line(text)) {
        const std::size_t colon = line.find(": ");
        std::string name = line.substr(0, colon);
        std::ranges::transform(name, name.begin(),
                               [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        request.headers[name] = colon == line.npos ? "" : line.substr(colon + 2);
    }
    return request;
}

// The path of "/path" and, as a proxy is asked, of "http://host/path".
std::string path_of(std::string target) {
    if (const std::size_t authority = target.find("://"); authority != target.npos)
        target.erase(0, std::min(target.find('/', authority + 3), target.size()));
    return target;
}

} // namespace

bool HttpServer::State::send_bytes(int connection, std::string_view bytes, const HttpReply& reply) {
    while (!bytes.empty()) {
        const auto count =
            send(connection, bytes.data(), std::min(bytes.size(), reply.chunk), MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
        if (reply.between_chunks.count() != 0 && !bytes.empty() && !wait(reply.between_chunks))
            return false;
    }
    return true;
}

void HttpServer::State::answer(int connection) {
    const HttpRequest request = parse(read_header(connection));
    Handler handler;
    {
        const std::lock_guard lock(mutex);
        requests.push_back(request);
        const auto found = handlers.find(path_of(request.target));
        handler = found == handlers.end() ? nullptr : found->second;
    }
    const HttpReply reply = handler ? handler(request) : http_reply("", "404 Not Found");
    bool alive = (reply.before.count() == 0 || wait(reply.before)) &&
                 send_bytes(connection, reply.bytes, reply);
    while (alive && !reply.endless.empty())
        alive = send_bytes(connection, reply.endless, reply) && wait({});
    if (alive && reply.hang) {
        std::unique_lock lock(mutex);
        stop_told.wait(lock, [this] { return stopped; });
    }
    close(connection);
}

void HttpServer::State::accept_all() {
    for (;;) {
        const int connection = accept(listener, nullptr, nullptr);
        const std::lock_guard lock(mutex);
        if (stopped || connection < 0) {
            if (connection >= 0)
                close(connection);
            return;
        }
        ++connections;
        // A client that goes silent must not keep the server from its end.
        const timeval limit{.tv_sec = 10, .tv_usec = 0};
        setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
        threads.emplace_back([this, connection] { answer(connection); });
    }
}

HttpReply http_reply(std::string_view body, std::string_view status,
                     const std::vector<std::string>& headers) {
    std::string text = "HTTP/1.1 " + std::string(status) + "\r\n";
    for (const std::string& header : headers)
        text += header + "\r\n";
    text += "Content-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n";
    return {.bytes = text.append(body)};
}

HttpReply http_redirect(std::string_view location) {
    return http_reply("", "302 Found", {"Location: " + std::string(location)});
}

HttpServer::HttpServer(Accepts accepts) : state_(std::make_shared<State>()) {
    state_->listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(state_->listener, generic, length) != 0 || listen(state_->listener, 64) != 0 ||
        getsockname(state_->listener, generic, &length) != 0)
        throw std::runtime_error("cannot listen on loopback");
    state_->port = ntohs(address.sin_port);
    if (accepts == Accepts::connections)
        state_->threads.emplace_back([state = state_.get()] { state->accept_all(); });
}

HttpServer::~HttpServer() {
    {
        const std::lock_guard lock(state_->mutex);
        state_->stopped = true;
        shutdown(state_->listener, SHUT_RDWR);
    }
    state_->stop_told.notify_all();
    // Nobody adds threads any more once the first one, which accepts, is over.
    for (std::thread& thread : state_->threads)
        thread.join();
    close(state_->listener);
}

void HttpServer::on(const std::string& path, Handler handler) {
    const std::lock_guard lock(state_->mutex);
    state_->handlers[path] = std::move(handler);
}

void HttpServer::on(const std::string& path, HttpReply reply) {
    on(path, [reply = std::move(reply)](const HttpRequest&) { return reply; });
}

void HttpServer::on_with_etag(const std::string& path, std::string body, std::string etag) {
    on(path, [body = std::move(body), etag = std::move(etag)](const HttpRequest& request) {
        const auto condition = request.headers.find("if-none-match");
        const bool known = condition != request.headers.end() && condition->second == etag;
        return known ? http_reply("", "304 Not Modified")
                     : http_reply(body, "200 OK", {"ETag: " + etag});
    });
}

int HttpServer::port() const { return state_->port; }

std::string HttpServer::url(std::string_view path) const {
    return "http://127.0.0.1:" + std::to_string(port()) + std::string(path);
}

std::vector<HttpRequest> HttpServer::requests(const std::string& path) const {
    const std::lock_guard lock(state_->mutex);
    std::vector<HttpRequest> found;
    std::ranges::copy_if(
        state_->requests, std::back_inserter(found),
        [&](const HttpRequest& request) { return path_of(request.target) == path; });
    return found;
}

std::size_t HttpServer::connections() const {
    const std::lock_guard lock(state_->mutex);
    return state_->connections;
}

} // namespace norvane::testing
