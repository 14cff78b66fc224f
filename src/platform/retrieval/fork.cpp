#include "platform/retrieval/CachedResponses.h"
#include "platform/retrieval/FailedRetrievals.h"
#include "platform/retrieval/Flight.h"
#include "platform/retrieval/Transports.h"

#include <pthread.h>

namespace norvane {
namespace {

// The locks of this folder, in the order in which they are taken here. None is held while another
// one is waited for, nor a lock of another folder, so the order in which folders are prepared for a
// fork does not matter.

void prepare() noexcept {
    prepare_flights_for_fork();
    FailedRetrievals::instance().prepare_fork();
    CachedResponses::instance().prepare_fork();
    prepare_transports_for_fork();
}

void go_on_in_parent() noexcept {
    go_on_with_transports_after_fork();
    CachedResponses::instance().go_on_in_parent();
    FailedRetrievals::instance().go_on_after_fork();
    go_on_with_flights_in_parent();
}

void begin_in_child() noexcept {
    go_on_with_transports_after_fork();
    CachedResponses::instance().begin_in_child();
    FailedRetrievals::instance().go_on_after_fork();
    begin_flights_in_child();
}

/// When the library is loaded, before a second thread can be on its way in it.
[[gnu::constructor]] void handle_forks() {
    static_cast<void>(pthread_atfork(prepare, go_on_in_parent, begin_in_child));
    // So that no fork finds one of these half made.
    prepare();
    go_on_in_parent();
}

} // namespace
} // namespace norvane
