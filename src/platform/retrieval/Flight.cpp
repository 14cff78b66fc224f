#include "platform/retrieval/Flight.h"

#include <condition_variable>
#include <csignal>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <unordered_map>
#include <utility>

namespace norvane {
namespace {

using Retrieve = std::function<RetrievalOutcome(const Deadline&)>;

/// So many retrievals may hang in a library beyond their deadlines before no more are begun.
constexpr std::size_t max_overdue = 64;

struct Flight {
    explicit Flight(Deadline::Clock::time_point end) : deadline(end) {}

    Deadline deadline;
    std::mutex mutex;
    std::condition_variable landed;
    std::optional<RetrievalOutcome> outcome; ///< Nothing while it is on its way.
};

/// Those that are on their way, by key.
class Flights {
  public:
    [[nodiscard]] static Flights& instance() {
        // Never destroyed: threads may still use it when static objects are.
        static auto* const flights = new Flights;
        return *flights;
    }

    struct Joined {
        std::shared_ptr<Flight> flight; ///< Null if too many hang.
        bool is_new = false;
    };

    [[nodiscard]] Joined join(const std::string& key, Deadline::Clock::time_point end) {
        const std::lock_guard lock(mutex_);
        std::shared_ptr<Flight>& known = by_key_[key];
        if (known != nullptr && !known->deadline.has_passed()) {
            known->deadline.put_off_to(end);
            return {known, false};
        }
        if (known != nullptr) {
            ++overdue_;
        }
        if (overdue_ >= max_overdue) {
            by_key_.erase(key);
            return {};
        }
        known = std::make_shared<Flight>(end);
        return {known, true};
    }

    /// Takes a flight that is over out of the table.
    void leave(const std::string& key, const Flight& flight) {
        const std::lock_guard lock(mutex_);
        const auto known = by_key_.find(key);
        if (known != by_key_.end() && known->second.get() == &flight) {
            by_key_.erase(known);
        } else {
            --overdue_;
        }
    }

  private:
    std::mutex mutex_;
    std::unordered_map<std::string, std::shared_ptr<Flight>> by_key_;
    std::size_t overdue_ = 0; ///< Those that are not over and not in the table any more.
};

void fly(const std::string& key, const std::shared_ptr<Flight>& flight, const Retrieve& retrieve) {
    RetrievalOutcome outcome = outcome_of([&] { return retrieve(flight->deadline); });
    Flights::instance().leave(key, *flight);
    const std::lock_guard lock(flight->mutex);
    flight->outcome = std::move(outcome);
    flight->landed.notify_all();
}

/// While it lives, the thread takes no signals, and those that it starts take none either: the
/// handlers of an application are not for threads that it does not know.
class SignalBlock {
  public:
    SignalBlock() noexcept {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_{};
};

void start(const std::string& key, const std::shared_ptr<Flight>& flight,
           const Retrieve& retrieve) {
    try {
        const SignalBlock block;
        std::thread([key, flight, retrieve] { fly(key, flight, retrieve); }).detach();
    } catch (const std::exception&) {
        // There can be no thread: then without one.
        fly(key, flight, retrieve);
    }
}

} // namespace

RetrievalOutcome share_flight(const std::string& key, Deadline::Clock::time_point end,
                              const Retrieve& retrieve) {
    for (;;) {
        const Flights::Joined joined = Flights::instance().join(key, end);
        if (joined.flight == nullptr) {
            return {ERROR_TIMEOUT, nullptr};
        }
        Flight& flight = *joined.flight;
        if (joined.is_new) {
            start(key, joined.flight, retrieve);
        }
        std::unique_lock lock(flight.mutex);
        flight.landed.wait_until(lock, end, [&] { return flight.outcome.has_value(); });
        auto outcome = flight.outcome.value_or(RetrievalOutcome{ERROR_TIMEOUT, nullptr});
        // The time of whoever began may have run out before this caller's.
        if (outcome.error != ERROR_TIMEOUT || joined.is_new || Deadline::Clock::now() >= end) {
            return outcome;
        }
    }
}

} // namespace norvane
