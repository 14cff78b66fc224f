#pragma once

#include <atomic>
#include <memory>

namespace norvane {

/// An object of the process that is made when it is first wanted, and never destroyed. Threads that
/// want it at the same time may each make one; the first to be ready stays. So nobody waits, and a
/// child of fork finds it made or not made, where it could find a static of a function being made
/// for ever.
template <class T>
class LazyObject {
  public:
    /// @param make gives a std::unique_ptr to a new object. What it throws is thrown.
    template <class Make>
    [[nodiscard]] T& get(Make make) {
        T* present = object_.load(std::memory_order_acquire);
        if (present == nullptr) {
            std::unique_ptr<T> made = make();
            if (object_.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)) {
                present = made.release();
            }
        }
        return *present;
    }

  private:
    std::atomic<T*> object_ = nullptr;
};

} // namespace norvane
