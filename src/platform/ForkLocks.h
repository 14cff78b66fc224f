#pragma once

#include <cstddef>
#include <mutex>

namespace norvane {

/// How many locks a table has whose users should seldom wait for each other. All locks of the
/// process together are fewer than 64: the thread sanitizer does not let a thread hold more.
inline constexpr std::size_t locks_of_a_table = 8;

/// What fork does to each lock: takes it before the process is copied, and gives it back after
/// that, on either side. A std::shared_mutex cannot serve: one side would not be its owner.
using LockVisitor = void (*)(std::mutex& lock);

// The locks of the process, those of one part to a function, which stands in the source of that
// part. A part with a new lock is entered here and, in its place, in ForkLocks.cpp.

void visit_module_list_locks(LockVisitor visit);
void visit_named_store_locks(LockVisitor visit);
void visit_configuration_locks(LockVisitor visit);
void visit_component_locks(LockVisitor visit);
void visit_collection_locks(LockVisitor visit);
void visit_store_content_locks(LockVisitor visit);
void visit_store_table_locks(LockVisitor visit);
void visit_crl_entry_locks(LockVisitor visit);
void visit_shared_certificate_locks(LockVisitor visit);
void visit_shared_crl_locks(LockVisitor visit);
void visit_key_cache_locks(LockVisitor visit);
void visit_open_key_locks(LockVisitor visit);

} // namespace norvane
