#include "platform/retrieval/Response.h"

#include "platform/store/ObjectFile.h"
#include "platform/store/SharedObject.h"

#include <algorithm>
#include <string_view>
#include <variant>

namespace norvane {
namespace {

/// More are not kept; a URL that delivers CRLs of many scopes has some dozens.
constexpr std::size_t max_marks = 1024;
constexpr std::string_view oid_issuing_distribution_point = "2.5.29.28";
constexpr std::string_view oid_delta_crl_indicator = "2.5.29.27";

template <class Object>
void add(ObjectStore& store, ByteView bytes) {
    auto outcome = SharedObjects<Object>::instance().get(bytes);
    if (auto* const object = std::get_if<Ref<Object>>(&outcome)) {
        static_cast<void>(store.add(std::move(*object), Duplicate::existing_used));
    }
}

CrlMark mark_of(const CRL_INFO& crl) {
    std::span<const std::uint8_t> point;
    bool delta = false;
    for (const CERT_EXTENSION& extension : std::span(crl.rgExtension, crl.cExtension)) {
        if (extension.pszObjId == oid_issuing_distribution_point) {
            point = {extension.Value.pbData, extension.Value.cbData};
        }
        delta = delta || extension.pszObjId == oid_delta_crl_indicator;
    }
    const std::uint64_t high = crl.ThisUpdate.dwHighDateTime;
    return {.scope = Digester()
                         .add(delta ? "delta" : "whole")
                         .add(encoded_length(crl.Issuer.cbData))
                         .add({crl.Issuer.pbData, crl.Issuer.cbData})
                         .add(point)
                         .finish(),
            .this_update = high << 32 | crl.ThisUpdate.dwLowDateTime};
}

/// Enters a mark, or makes the one of its scope as new.
void enter(CrlMark mark, std::vector<CrlMark>& marks) {
    const auto known = std::ranges::find(marks, mark.scope, &CrlMark::scope);
    if (known != marks.end()) {
        known->this_update = std::max(known->this_update, mark.this_update);
    } else if (marks.size() < max_marks) {
        marks.push_back(mark);
    }
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
        enter(mark_of(*crl->context.pCrlInfo), marks);
    }
    return marks;
}

std::optional<Digest> rolled_back_scope(std::span<const CrlMark> answer,
                                        std::span<const CrlMark> seen, std::uint64_t latest) {
    for (const CrlMark& mark : seen) {
        const auto now = std::ranges::find(answer, mark.scope, &CrlMark::scope);
        if (now != answer.end() && now->this_update < mark.this_update &&
            mark.this_update <= latest) {
            return mark.scope;
        }
    }
    return std::nullopt;
}

std::vector<CrlMark> merged_marks(std::span<const CrlMark> answer, std::span<const CrlMark> seen) {
    std::vector<CrlMark> marks(seen.begin(), seen.end());
    for (const CrlMark& mark : answer) {
        const auto known = std::ranges::find(marks, mark.scope, &CrlMark::scope);
        if (known != marks.end()) {
            // The answer was accepted: if its CRL is older, the mark was not to be believed.
            known->this_update = mark.this_update;
        } else {
            enter(mark, marks);
        }
    }
    return marks;
}

} // namespace norvane
