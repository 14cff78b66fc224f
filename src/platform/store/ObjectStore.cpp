#include "platform/store/ObjectStore.h"

#include <cstring>
#include <map>

namespace norvane {
namespace {

/// A place among the certificates with one key identifier, and the order of such places.
struct KeyPlace {
    ByteView key_identifier;
    std::uint32_t place;

    friend bool operator<(const KeyPlace& a, const KeyPlace& b) {
        const ByteView x = a.key_identifier;
        const ByteView y = b.key_identifier;
        if (x.length != y.length) {
            return x.length < y.length;
        }
        const int order = x.empty() ? 0 : std::memcmp(x.data, y.data, x.length);
        return order != 0 ? order < 0 : a.place < b.place;
    }
};

} // namespace

template <class Object>
ContextCell<Object>& CellList<Object>::add(Ref<Object> object, ObjectStore& store) {
    auto cell = std::make_unique<Cell>(object->cell());
    cell->context.hCertStore = store.handle();
    cell->store = &store;
    cell->place = static_cast<std::uint32_t>(kept_.size());
    kept_.push_back({std::move(object), std::move(cell)});
    Cell& added = *kept_.back().cell;
    try {
        by_object_.try_emplace(added.object, added.place);
    } catch (...) {
        kept_.pop_back();
        throw;
    }
    return added;
}

template <class Object>
void CellList<Object>::drop_last() noexcept {
    const Cell& last = *kept_.back().cell;
    if (find(last.object) == &last) {
        by_object_.erase(last.object);
    }
    kept_.pop_back();
}

namespace {

/// Those of the content of stores. They are few and shared by all stores, since fork could not find
/// one in each store; far enough from each other that threads with stores of their own do not
/// disturb each other.
struct alignas(64) ContentLock {
    std::mutex mutex;
};
constinit std::array<ContentLock, locks_of_a_table> content_locks;

} // namespace

void visit_store_content_locks(LockVisitor visit) {
    for (ContentLock& lock : content_locks) {
        visit(lock.mutex);
    }
}

struct ObjectStore::Content {
    CellList<SharedCertificate> certificates;
    CellList<SharedCrl> crls;
    std::map<KeyPlace, CertificateCell*> by_key_identifier;
};

ObjectStore::~ObjectStore() { delete content_.load(); }

ObjectStore::Content& ObjectStore::content() {
    Content* present = content_.load(std::memory_order_acquire);
    if (present == nullptr) {
        auto made = std::make_unique<Content>();
        if (content_.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)) {
            present = made.release();
        }
    }
    return *present;
}

std::unique_lock<std::mutex> ObjectStore::lock() const {
    return additions_ == Additions::allowed
               ? std::unique_lock(content_locks[number() % content_locks.size()].mutex)
               : std::unique_lock<std::mutex>();
}

CertificateCell* ObjectStore::add(Ref<SharedCertificate> object, Duplicate duplicate) {
    Content& all = content();
    const auto held = lock();
    CertificateCell* const existing = all.certificates.find(object.get());
    if (existing != nullptr && duplicate != Duplicate::added) {
        return duplicate == Duplicate::existing_used ? existing : nullptr;
    }
    CertificateCell& cell = all.certificates.add(std::move(object), *this);
    if (const auto identifier = cell.object->subject_key_identifier()) {
        try {
            all.by_key_identifier.emplace(KeyPlace{*identifier, cell.place}, &cell);
        } catch (...) {
            all.certificates.drop_last();
            throw;
        }
    }
    return &cell;
}

CrlCell* ObjectStore::add(Ref<SharedCrl> object, Duplicate duplicate) {
    Content& all = content();
    const auto held = lock();
    CrlCell* const existing = all.crls.find(object.get());
    if (existing != nullptr && duplicate != Duplicate::added) {
        return duplicate == Duplicate::existing_used ? existing : nullptr;
    }
    return &all.crls.add(std::move(object), *this);
}

CertificateCell* ObjectStore::certificate_from(std::uint32_t place) const {
    Content* const all = content_.load(std::memory_order_acquire);
    if (all == nullptr) {
        return nullptr;
    }
    const auto held = lock();
    return all->certificates.at(place);
}

CrlCell* ObjectStore::crl_from(std::uint32_t place) const {
    Content* const all = content_.load(std::memory_order_acquire);
    if (all == nullptr) {
        return nullptr;
    }
    const auto held = lock();
    return all->crls.at(place);
}

CertificateCell* ObjectStore::certificate_from(std::uint32_t place, ByteView key_identifier) const {
    Content* const all = content_.load(std::memory_order_acquire);
    if (all == nullptr) {
        return nullptr;
    }
    const auto held = lock();
    const auto found = all->by_key_identifier.lower_bound({key_identifier, place});
    const bool fits =
        found != all->by_key_identifier.end() && found->first.key_identifier == key_identifier;
    return fits ? found->second : nullptr;
}

} // namespace norvane
