#pragma once

#include "platform/retrieval/Deadline.h"

#include <norvane/wincrypt.h>

#include <string>
#include <variant>

namespace norvane {

/// Connects to a port of a host over TCP, to each of its addresses in turn until one accepts.
/// Returns soon after the deadline, unless the look-up of the name blocks.
///
/// @return an open socket that does not block, which is the caller's to close; or the last error.
///     Throws std::bad_alloc.
[[nodiscard]] std::variant<int, DWORD> connect_to_host(const std::string& host, int port,
                                                       const Deadline& deadline);

/// What this process lacks to open the sockets of a request: the last error for it, or
/// `ERROR_SUCCESS` if it can open them. Libraries tell of such a want as if a host could not be
/// reached.
[[nodiscard]] DWORD want_of_sockets() noexcept;

/// A socket as socket(2) gives it. Leaves in `failure` what this process lacks if it has failed,
/// but nothing if the system has no such family.
[[nodiscard]] int open_socket(int family, int type, int protocol, DWORD& failure) noexcept;

} // namespace norvane
