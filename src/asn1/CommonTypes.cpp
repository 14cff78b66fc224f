#include "asn1/CommonTypes.h"

namespace norvane {

void decode(Reader& in, ASN1T_Time& out, const char* element) {
    const bool utc = in.next_is_string(Tag::utc_time);
    if (!utc && !in.next_is_string(Tag::generalized_time)) {
        in.unexpected(element, "UTCTime or GeneralizedTime");
        return;
    }
    const ByteView text = in.string(utc ? Tag::utc_time : Tag::generalized_time, element);
    out.t = utc ? ASN1T_Time::utcTime_chosen : ASN1T_Time::generalTime_chosen;
    out.text = {reinterpret_cast<const char*>(text.data), text.length};
}

void decode(Reader& in, ASN1T_AlgorithmIdentifier& out, const char* element) {
    Reader fields = in.enter(Tag::sequence, element);
    out.algorithm = fields.object_identifier(Tag::object_identifier, "algorithm");
    if (!fields.at_end()) {
        out.parameters = fields.any("parameters");
    }
    fields.finish();
}

void decode(Reader& in, ASN1T_SubjectPublicKeyInfo& out, const char* element) {
    Reader fields = in.enter(Tag::sequence, element);
    decode(fields, out.algorithm, "algorithm");
    out.subjectPublicKey = fields.bit_string(Tag::bit_string, "subjectPublicKey");
    fields.finish();
}

} // namespace norvane
