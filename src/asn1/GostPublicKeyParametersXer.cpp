#include "asn1/GostPublicKeyParametersXer.h"

#include "asn1/BerHeader.h"
#include "asn1/DottedText.h"
#include "asn1/Tag.h"
#include "asn1/XerWriter.h"

#include <algorithm>

namespace norvane {
namespace {

using Parameters = ASN1T_GostR3410_94_PublicKeyParameters;

void append_element(std::vector<std::uint8_t>& out, Tag tag,
                    const std::vector<std::uint8_t>& content) {
    const auto length = static_cast<std::uint32_t>(content.size());
    const std::size_t header = out.size();
    out.resize(header + 1 + length_octets(length));
    out[header] = octet(tag);
    write_length(&out[header + 1], length);
    out.insert(out.end(), content.begin(), content.end());
}

ByteView copy_to(ASN1CTXT& ctxt, const std::vector<std::uint8_t>& octets) {
    auto* const copy = static_cast<std::uint8_t*>(rtMemHeapAlloc(ctxt, octets.size()));
    std::copy(octets.begin(), octets.end(), copy);
    return {copy, static_cast<std::uint32_t>(octets.size())};
}

} // namespace

int ASN1C_GostR3410_94_PublicKeyParameters::EncodeTo(ASN1XEREncodeBuffer& buffer) const {
    XerWriter out(buffer.getCtxt());
    out.open(Parameters::type_name);
    for (const auto& [name, member] : Parameters::fields) {
        if (member == &Parameters::encryptionParamSet && value().m.encryptionParamSetPresent == 0) {
            continue;
        }
        const auto text = dotted_text(value().*member);
        if (!text) {
            return rtErrSetData(buffer.getCtxt(), {.status = ASN1Status::nothing_to_encode,
                                                   .element = name,
                                                   .offset = 0,
                                                   .expected = "an identifier of 32-bit arcs",
                                                   .found = "none, or one with a longer arc"});
        }
        out.leaf(name, *text);
    }
    out.close(Parameters::type_name);
    buffer.setMessage(out.take());
    return code(ASN1Status::ok);
}

int ASN1C_GostR3410_94_PublicKeyParameters::DecodeFrom(ASN1XERDecodeBuffer& buffer) {
    Parameters& value = bound_value();
    value = {};
    parse_xml(buffer.getBuffer(), *this);
    std::vector<std::uint8_t> encoding;
    append_element(encoding, Tag::sequence, content_);
    ASN1CTXT& ctxt = buffer.getCtxt();
    const int status = decode_element(ctxt, copy_to(ctxt, encoding), value);
    bind_context(value, buffer.getContext());
    return status;
}

void ASN1C_GostR3410_94_PublicKeyParameters::init() {
    place_ = Place::outside;
    fields_read_ = 0;
    content_.clear();
}

bool ASN1C_GostR3410_94_PublicKeyParameters::startElement(std::string_view name) {
    switch (place_) {
    case Place::outside:
        place_ = Place::between_fields;
        return name == Parameters::type_name;
    case Place::between_fields:
        place_ = Place::empty_field;
        return fields_read_ != Parameters::fields.size() &&
               name == Parameters::fields[fields_read_].name;
    default:
        return false;
    }
}

bool ASN1C_GostR3410_94_PublicKeyParameters::characters(std::string_view text) {
    const auto octets = octets_of_dotted(text);
    if (place_ != Place::empty_field || !octets) {
        return false;
    }
    append_element(content_, Tag::object_identifier, *octets);
    place_ = Place::filled_field;
    return true;
}

bool ASN1C_GostR3410_94_PublicKeyParameters::endElement(std::string_view /*name*/) {
    switch (place_) {
    case Place::filled_field:
        ++fields_read_;
        place_ = Place::between_fields;
        return true;
    case Place::between_fields:
        place_ = Place::outside;
        return fields_read_ >= Parameters::required_fields;
    default:
        return false;
    }
}

} // namespace norvane
