#pragma once

#include "platform/retrieval/Deadline.h"

#include <condition_variable>
#include <mutex>
#include <sys/socket.h>
#include <thread>

namespace norvane {

/// While it lives, shuts a socket down when a deadline passes, so that a library that waits for the
/// socket meets the end of the connection.
class ShutdownAtDeadline {
  public:
    /// Throws std::system_error if there can be no thread.
    ShutdownAtDeadline(int socket, const Deadline& deadline)
        : thread_([this, socket, &deadline] { watch(socket, deadline); }) {}
    ShutdownAtDeadline(const ShutdownAtDeadline&) = delete;
    ShutdownAtDeadline& operator=(const ShutdownAtDeadline&) = delete;
    ~ShutdownAtDeadline() {
        {
            const std::lock_guard lock(mutex_);
            is_over_ = true;
        }
        over_.notify_one();
        thread_.join();
    }

  private:
    void watch(int socket, const Deadline& deadline) {
        std::unique_lock lock(mutex_);
        while (!is_over_ && !deadline.has_passed()) {
            over_.wait_for(lock, deadline.remaining());
        }
        if (!is_over_) {
            shutdown(socket, SHUT_RDWR);
        }
    }

    std::mutex mutex_;
    std::condition_variable over_;
    bool is_over_ = false;
    std::thread thread_;
};

} // namespace norvane
