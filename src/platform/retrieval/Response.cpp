#include "platform/retrieval/Response.h"

#include "platform/store/ObjectFile.h"
#include "platform/store/SharedObject.h"

#include <algorithm>
#include <map>
#include <utility>
#include <variant>

namespace norvane {
namespace {

/// More are not looked at; a URL that delivers CRLs of many scopes has some dozens.
constexpr std::size_t max_scopes = 1024;

/// What is known of a scope in a response.
struct Scope {
    MarkDates dates;
    bool is_served = false;
};

template <class Object>
void add(ObjectStore& store, ByteView bytes) {
    auto outcome = SharedObjects<Object>::instance().get(bytes);
    if (auto* const object = std::get_if<Ref<Object>>(&outcome)) {
        static_cast<void>(store.add(std::move(*object), Duplicate::existing_used));
    }
}

/// The CRLs at some places of a store, in a store of their own; null if there are none.
Ref<ObjectStore> store_with(const ObjectStore& objects, std::span<const std::uint32_t> places) {
    if (places.empty()) {
        return {};
    }
    auto store = Ref<ObjectStore>::adopt(new ObjectStore(Additions::refused));
    for (const std::uint32_t place : places) {
        auto crl = Ref<SharedCrl>::share(objects.crl_from(place)->object);
        static_cast<void>(store->add(std::move(crl), Duplicate::existing_used));
    }
    store->publish();
    return store;
}

} // namespace

Ref<ObjectStore> read_objects_of(ObjectKind kind, std::span<const ByteView> parts) {
    auto store = Ref<ObjectStore>::adopt(new ObjectStore(Additions::refused));
    for (const ByteView part : parts) {
        const ObjectFile file(part);
        for (const ObjectFile::Object& object : file.objects()) {
            if (object.kind != kind) {
                continue;
            }
            if (kind == ObjectKind::certificate) {
                add<SharedCertificate>(*store, object.bytes);
            } else {
                add<SharedCrl>(*store, object.bytes);
            }
        }
    }
    if (store->certificate_from(0) == nullptr && store->crl_from(0) == nullptr) {
        return {};
    }
    store->publish();
    return store;
}

std::vector<CrlMark> marks_of(const ObjectStore& objects) {
    std::vector<CrlMark> marks;
    for (std::uint32_t place = 0; const CrlCell* crl = objects.crl_from(place); ++place) {
        marks.push_back(mark_of(*crl->context.pCrlInfo));
    }
    return marks;
}

CurrentCrls current_crls(const Ref<ObjectStore>& objects, std::span<const CrlMark> marks,
                         const CrlMarks& seen, std::time_t now) {
    std::map<Digest, Scope> scopes;
    for (const CrlMark& mark : marks) {
        if (!scopes.contains(mark.scope) && scopes.size() < max_scopes) {
            scopes[mark.scope].dates = seen.dates(mark.scope, now);
        }
    }
    for (const CrlMark& mark : marks) {
        const auto scope = scopes.find(mark.scope);
        if (scope == scopes.end()) {
            continue;
        }
        MarkDates& dates = scope->second.dates;
        dates.newest = std::max(dates.newest, mark.this_update);
        if (is_believable(mark.this_update, now)) {
            dates.least = std::max(dates.least, mark.this_update);
        }
    }
    CurrentCrls current;
    std::vector<std::uint32_t> places;
    for (std::uint32_t place = 0; place < marks.size(); ++place) {
        const auto scope = scopes.find(marks[place].scope);
        const std::uint64_t date = marks[place].this_update;
        current.lasting &= scope != scopes.end() && date >= scope->second.dates.newest;
        if (scope != scopes.end() && date >= scope->second.dates.least) {
            scope->second.is_served = true;
            places.push_back(place);
            current.marks.push_back(marks[place]);
        }
    }
    for (const auto& [digest, scope] : scopes) {
        if (!scope.is_served) {
            current.outdated_scopes.push_back(digest);
        }
    }
    current.complete = places.size() == marks.size();
    current.objects = current.complete ? objects : store_with(*objects, places);
    return current;
}

CurrentPart current_part(ResponsePtr cached, const CrlMarks& seen, std::time_t now) {
    if (cached == nullptr) {
        return {};
    }
    CurrentCrls current = current_crls(cached->objects, cached->marks, seen, now);
    if (current.complete) {
        return {.response = std::move(cached), .lasting = current.lasting};
    }
    if (!current.objects) {
        return {};
    }
    return {.response =
                std::make_shared<const Response>(Response{.objects = std::move(current.objects),
                                                          .marks = std::move(current.marks),
                                                          .validators = cached->validators,
                                                          .content_digest = cached->content_digest,
                                                          .received = cached->received})};
}

} // namespace norvane
