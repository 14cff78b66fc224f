#include "platform/crypto/KeyCache.h"

#include "platform/NeverDestroyed.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace norvane {
namespace {

std::size_t hash_of(Octets octets) noexcept {
    return std::hash<std::string_view>{}(
        {reinterpret_cast<const char*>(octets.data()), octets.size()});
}

std::size_t hash_of(const KeySource& source) noexcept {
    constexpr std::size_t odd_factor = 0x9E3779B97F4A7C15; // Spreads over the upper bits too.
    return (hash_of(source.key) * odd_factor) ^ hash_of(source.parameters);
}

} // namespace

bool KeyCache::Entry::is_made_from(const KeySource& source, std::size_t source_hash) const {
    const Octets all = bytes;
    return last_use != 0 && hash == source_hash && provider == source.provider &&
           algorithm == source.algorithm && parameters_size == source.parameters.size() &&
           std::ranges::equal(all.first(parameters_size), source.parameters) &&
           std::ranges::equal(all.subspan(parameters_size), source.key);
}

std::shared_ptr<const PublicKey> KeyCache::Set::find(const KeySource& source, std::size_t hash) {
    for (Entry& entry : entries) {
        if (entry.is_made_from(source, hash)) {
            entry.last_use = ++uses;
            return entry.public_key;
        }
    }
    return nullptr;
}

void KeyCache::Set::insert(Entry entry) {
    entry.last_use = ++uses;
    // Another thread may have put in the same key meanwhile; then there are two for a while.
    *std::ranges::min_element(entries, {}, &Entry::last_use) = std::move(entry);
}

std::shared_ptr<const PublicKey> KeyCache::get(const KeySource& source) {
    const std::size_t hash = hash_of(source);
    Set& set = sets_[hash % sets_.size()];
    {
        const std::lock_guard lock(mutex_of(hash));
        if (auto known = set.find(source, hash)) {
            return known;
        }
    }
    auto made = source.provider->import_key(source.algorithm, source.parameters, source.key);
    if (made != nullptr) {
        std::vector<std::uint8_t> bytes;
        bytes.reserve(source.parameters.size() + source.key.size());
        bytes.insert(bytes.end(), source.parameters.begin(), source.parameters.end());
        bytes.insert(bytes.end(), source.key.begin(), source.key.end());
        const std::lock_guard lock(mutex_of(hash));
        set.insert({.provider = source.provider,
                    .algorithm = source.algorithm,
                    .hash = hash,
                    .parameters_size = source.parameters.size(),
                    .bytes = std::move(bytes),
                    .public_key = made});
    }
    return made;
}

void KeyCache::visit_locks(LockVisitor visit) { std::ranges::for_each(mutexes_, visit); }

namespace {

constinit NeverDestroyed<KeyCache> only_cache;

} // namespace

KeyCache& key_cache() { return only_cache.object; }

void visit_key_cache_locks(LockVisitor visit) { key_cache().visit_locks(visit); }

} // namespace norvane
