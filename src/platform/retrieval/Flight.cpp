#include "platform/retrieval/Flight.h"

#include "platform/NeverDestroyed.h"

#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>

namespace norvane {
namespace {

using Retrieve = std::function<RetrievalOutcome(const Deadline&)>;

/// So many retrievals may be on their way at once, each with a thread and some descriptors.
constexpr std::size_t max_flights = 256;

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
    [[nodiscard]] static Flights& instance() noexcept {
        static NeverDestroyed<Flights> flights;
        return flights.object;
    }

    struct Joined {
        std::shared_ptr<Flight> flight; ///< Null if there was no room until the end.
        bool is_new = false;
    };

    [[nodiscard]] Joined join(const std::string& key, Deadline::Clock::time_point end) {
        std::unique_lock lock(mutex_);
        for (;;) {
            const auto known = by_key_.find(key);
            if (known != by_key_.end() && !known->second->deadline.has_passed()) {
                known->second->deadline.put_off_to(end);
                return {known->second, false};
            }
            if (count_ < max_flights) {
                auto flight = std::make_shared<Flight>(end);
                by_key_[key] = flight;
                ++count_;
                return {std::move(flight), true};
            }
            if (ended_.wait_until(lock, end) == std::cv_status::timeout) {
                return {};
            }
        }
    }

    /// For a flight that is over. Another may have taken its place in the table.
    void leave(const std::string& key, const Flight& flight) {
        const std::lock_guard lock(mutex_);
        const auto known = by_key_.find(key);
        if (known != by_key_.end() && known->second.get() == &flight) {
            by_key_.erase(known);
        }
        --count_;
        ended_.notify_all();
    }

    void prepare_fork() noexcept { mutex_.lock(); }
    void go_on_in_parent() noexcept { mutex_.unlock(); }
    /// None of the parent's flights is on its way in the child. What they left behind stays where
    /// it is: threads of the parent seem to wait for it.
    void begin_in_child() noexcept {
        new (&ended_) std::condition_variable;
        new (&by_key_) std::unordered_map<std::string, std::shared_ptr<Flight>>;
        count_ = 0;
        mutex_.unlock();
    }

  private:
    std::mutex mutex_;
    std::condition_variable ended_;
    std::unordered_map<std::string, std::shared_ptr<Flight>> by_key_;
    std::size_t count_ = 0; ///< of all that are not over, in the table or not any more
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
    } catch (...) {
        // Without a thread nobody would keep to the time. Whoever waits is told why.
        fly(key, flight, [why = std::current_exception()](const Deadline&) -> RetrievalOutcome {
            std::rethrow_exception(why);
        });
    }
}

} // namespace

RetrievalOutcome share_flight(const std::string& key, Deadline::Clock::time_point end,
                              const Retrieve& retrieve) {
    for (;;) {
        const Flights::Joined joined = Flights::instance().join(key, end);
        if (joined.flight == nullptr) {
            return {ERROR_NO_SYSTEM_RESOURCES, nullptr};
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

void prepare_flights_for_fork() noexcept { Flights::instance().prepare_fork(); }
void go_on_with_flights_in_parent() noexcept { Flights::instance().go_on_in_parent(); }
void begin_flights_in_child() noexcept { Flights::instance().begin_in_child(); }

} // namespace norvane
