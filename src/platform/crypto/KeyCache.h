#pragma once

#include "platform/ForkLocks.h"
#include "platform/crypto/Provider.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace norvane {

/// What a key is made from.
struct KeySource {
    const Provider* provider;
    ALG_ID algorithm;
    Octets parameters;
    Octets key;
};

/// Imported keys by what they were made from. Importing a key, and what a library computes for it
/// at its first use, costs more than a verification, and few keys sign most of what is looked at.
///
/// A key has its place in one set, whose least recently used member makes room for a new one. So
/// somebody who chooses keys can slow down nobody but those whose keys fall into the same set.
class KeyCache {
  public:
    static constexpr std::size_t max_keys = 1024;

    /// The key, imported if it is not here. Null if the provider does not take it; that is not
    /// remembered. Throws what the provider throws.
    [[nodiscard]] std::shared_ptr<const PublicKey> get(const KeySource& source);

    void visit_locks(LockVisitor visit);

  private:
    static constexpr std::size_t ways = 8;

    struct Entry {
        const Provider* provider = nullptr;
        ALG_ID algorithm = 0;
        std::size_t hash = 0;
        std::size_t parameters_size = 0;
        std::vector<std::uint8_t> bytes; ///< the parameters and the key
        std::shared_ptr<const PublicKey> public_key;
        std::uint64_t last_use = 0; ///< 0: the place is free

        [[nodiscard]] bool is_made_from(const KeySource& source, std::size_t source_hash) const;
    };

    struct Set {
        std::uint64_t uses = 0;
        std::array<Entry, ways> entries;

        [[nodiscard]] std::shared_ptr<const PublicKey> find(const KeySource& source,
                                                            std::size_t hash);
        void insert(Entry entry);
    };

    [[nodiscard]] std::mutex& mutex_of(std::size_t hash) {
        return mutexes_[hash % mutexes_.size()];
    }

    std::array<std::mutex, locks_of_a_table> mutexes_; ///< Each guards a part of the sets.
    std::array<Set, max_keys / ways> sets_;
    static_assert(max_keys / ways % locks_of_a_table == 0, "a set has one lock");
};

/// The cache of this process. It is never destroyed, so it can be used until the very end.
[[nodiscard]] KeyCache& key_cache();

} // namespace norvane
