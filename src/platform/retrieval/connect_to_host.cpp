#include "platform/retrieval/connect_to_host.h"

#include "platform/SystemFailure.h"

#include <array>
#include <cerrno>
#include <memory>
#include <netdb.h>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace norvane {
namespace {

/// More descriptors no library holds at once for one request, with the look-up of a name.
constexpr std::size_t sockets_of_a_request = 8;

struct FreeAddresses {
    void operator()(addrinfo* addresses) const noexcept { freeaddrinfo(addresses); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

DWORD look_up_failure(int code) {
    if (code == EAI_MEMORY) {
        throw std::bad_alloc();
    }
    if (code == EAI_SYSTEM) {
        const DWORD error = own_failure_of(errno);
        return error == ERROR_SUCCESS ? ERROR_NO_SYSTEM_RESOURCES : error;
    }
    const DWORD want = want_of_sockets();
    return want == ERROR_SUCCESS ? ERROR_INTERNET_NAME_NOT_RESOLVED : want;
}

/// Whether a connection has come about before the deadline.
bool is_connected(int socket, const Deadline& deadline) {
    pollfd waited{.fd = socket, .events = POLLOUT, .revents = 0};
    while (!deadline.has_passed()) {
        const auto left = static_cast<int>(deadline.remaining().count());
        if (poll(&waited, 1, left) <= 0) {
            continue; // Time has passed, or a signal came.
        }
        int error = 0;
        socklen_t size = sizeof error;
        return getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
    }
    return false;
}

} // namespace

int open_socket(int family, int type, int protocol, DWORD& failure) noexcept {
    const int opened = socket(family, type | SOCK_CLOEXEC, protocol);
    if (opened < 0 && errno != EAFNOSUPPORT) {
        failure = own_failure_of(errno);
        failure = failure == ERROR_SUCCESS ? ERROR_NO_SYSTEM_RESOURCES : failure;
    }
    return opened;
}

DWORD want_of_sockets() noexcept {
    std::array<int, sockets_of_a_request> probes{};
    DWORD failure = ERROR_SUCCESS;
    for (int& probe : probes) {
        probe = open_socket(AF_INET, SOCK_STREAM, 0, failure);
    }
    for (const int probe : probes) {
        if (probe >= 0) {
            close(probe);
        }
    }
    return failure;
}

std::variant<int, DWORD> connect_to_host(const std::string& host, int port,
                                         const Deadline& deadline) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (const int code = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
        code != 0) {
        return look_up_failure(code);
    }
    const Addresses addresses(found);
    for (const addrinfo* at = found; at != nullptr && !deadline.has_passed(); at = at->ai_next) {
        DWORD failure = ERROR_SUCCESS;
        const int opened =
            open_socket(at->ai_family, at->ai_socktype | SOCK_NONBLOCK, at->ai_protocol, failure);
        if (failure != ERROR_SUCCESS) {
            return failure;
        }
        if (opened < 0) {
            continue;
        }
        if (connect(opened, at->ai_addr, at->ai_addrlen) == 0 ||
            (errno == EINPROGRESS && is_connected(opened, deadline))) {
            return opened;
        }
        close(opened);
    }
    return deadline.has_passed() ? ERROR_TIMEOUT : ERROR_INTERNET_CANNOT_CONNECT;
}

} // namespace norvane
