#include "platform/ForkLocks.h"

#include <pthread.h>

namespace norvane {
namespace {

/// The order in which locks nest: who holds one takes at most such as stand behind it. fork takes
/// them in the same order, so it waits for threads that are at work with them and never in a
/// circle. It then has them all, and the child finds none that is held by a thread which it does
/// not have, nor anything half changed.
///
/// Loading modules and reading stores may do all that follows. Collections and stores let go of
/// objects, which leave the tables of those; the rest is held for a moment, and nothing in it.
constexpr void (*visit_in_order[])(LockVisitor) = {
    visit_module_list_locks, visit_named_store_locks, visit_configuration_locks,
    visit_component_locks,   visit_collection_locks,  visit_store_content_locks,
    visit_store_table_locks, visit_crl_entry_locks,   visit_shared_certificate_locks,
    visit_shared_crl_locks,  visit_key_cache_locks,   visit_open_key_locks,
};

void take_all() {
    for (const auto visit_locks : visit_in_order) {
        visit_locks([](std::mutex& lock) { lock.lock(); });
    }
}

void release_all() {
    for (const auto visit_locks : visit_in_order) {
        visit_locks([](std::mutex& lock) { lock.unlock(); });
    }
}

/// Where there is no memory for this, fork is as if there were no handlers.
[[maybe_unused]] const int registered = pthread_atfork(take_all, release_all, release_all);

} // namespace
} // namespace norvane
