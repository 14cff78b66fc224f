#include "platform/store/SignedData.h"

#include "asn1/Decode.h"

#include <array>

namespace norvane {
namespace {

/// 1.2.840.113549.1.7.2
constexpr std::array<std::uint8_t, 9> signed_data_oid{0x2a, 0x86, 0x48, 0x86, 0xf7,
                                                      0x0d, 0x01, 0x07, 0x02};

/// Tells a TBSCertList from a TBSCertificate: behind the issuer the one has a time, the other a
/// SEQUENCE of two.
ObjectKind outline_of(Reader& tbs) {
    if (tbs.next_is(constructed(context(0)))) {
        return ObjectKind::certificate;
    }
    if (tbs.next_is(Tag::integer)) {
        tbs.content(Tag::integer, "version");
    }
    tbs.content(Tag::sequence, "signature");
    tbs.content(Tag::sequence, "issuer");
    const bool time_follows =
        tbs.next_is_string(Tag::utc_time) || tbs.next_is_string(Tag::generalized_time);
    return time_follows ? ObjectKind::crl : ObjectKind::certificate;
}

/// The objects of an implicitly tagged SET OF, in which other alternatives than certificates and
/// CRLs have tags of their own.
void read_set(Reader& in, Tag tag, const char* element, ObjectKind kind,
              std::vector<EncodedObject>& objects) {
    if (!in.next_is(tag)) {
        return;
    }
    Reader set = in.enter(tag, element);
    while (!set.at_end()) {
        const bool wanted = set.next_is(Tag::sequence);
        const ByteView bytes = set.any(nullptr);
        if (wanted) {
            objects.push_back({kind, bytes});
        }
    }
}

void read_content_info(Reader& info, std::vector<EncodedObject>& objects) {
    const std::uint8_t* const start = info.position();
    const ASN1TObjId type = info.object_identifier(Tag::object_identifier, "contentType");
    if (!(type.content() == ByteView{signed_data_oid.data(), signed_data_oid.size()})) {
        info.fail(ASN1Status::bad_value, "contentType", start, "signedData", "another type");
        return;
    }
    Reader content = info.enter(constructed(context(0)), "content");
    Reader data = content.enter(Tag::sequence, "SignedData");
    static_cast<void>(data.integer(Tag::integer, "version"));
    data.content(Tag::set, "digestAlgorithms");
    data.content(Tag::sequence, "contentInfo");
    read_set(data, constructed(context(0)), "certificates", ObjectKind::certificate, objects);
    read_set(data, constructed(context(1)), "crls", ObjectKind::crl, objects);
    data.content(Tag::set, "signerInfos");
    data.finish();
    content.finish();
    info.finish();
}

} // namespace

int read_objects(ASN1CTXT& ctxt, ByteView bytes, std::vector<EncodedObject>& objects) {
    const std::size_t count = objects.size();
    const int status = decode_with(ctxt, bytes, DecodeReport::failure, [&](Reader& in) {
        objects.resize(count);
        Reader outer = in.enter(Tag::sequence, "object");
        if (outer.next_is(Tag::object_identifier)) {
            read_content_info(outer, objects);
        } else {
            Reader tbs = outer.enter(Tag::sequence, "toBeSigned");
            objects.push_back({outline_of(tbs), bytes});
        }
    });
    if (status < 0) {
        objects.resize(count);
    }
    return status;
}

} // namespace norvane
