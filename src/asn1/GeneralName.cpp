#include "asn1/GeneralName.h"

#include <array>

namespace norvane {
namespace {

/// How the content of an alternative is tagged inside its context tag (RFC 5280, appendix A.2:
/// implicit tags, but explicit around the CHOICE types).
enum class Content : std::uint8_t { implicit_sequence, implicit_string, explicit_name };

struct GeneralNameSyntax {
    ASN1T_GeneralName::Alternative alternative;
    const char* name;
    Content content;
};

constexpr std::array general_name_syntaxes{
    GeneralNameSyntax{ASN1T_GeneralName::otherName, "otherName", Content::implicit_sequence},
    GeneralNameSyntax{ASN1T_GeneralName::rfc822Name, "rfc822Name", Content::implicit_string},
    GeneralNameSyntax{ASN1T_GeneralName::dNSName, "dNSName", Content::implicit_string},
    GeneralNameSyntax{ASN1T_GeneralName::x400Address, "x400Address", Content::implicit_sequence},
    GeneralNameSyntax{ASN1T_GeneralName::directoryName, "directoryName", Content::explicit_name},
    GeneralNameSyntax{ASN1T_GeneralName::ediPartyName, "ediPartyName", Content::implicit_sequence},
    GeneralNameSyntax{ASN1T_GeneralName::uniformResourceIdentifier, "uniformResourceIdentifier",
                      Content::implicit_string},
    GeneralNameSyntax{ASN1T_GeneralName::iPAddress, "iPAddress", Content::implicit_string},
    GeneralNameSyntax{ASN1T_GeneralName::registeredID, "registeredID", Content::implicit_string},
};

} // namespace

void decode(Reader& in, ASN1T_GeneralName& out, const char* element) {
    const unsigned number = octet(in.next_tag()) & tag_number_mask;
    const bool context_class = (octet(in.next_tag()) & 0xc0U) == octet(context(0));
    if (!context_class || number >= general_name_syntaxes.size()) {
        in.unexpected(element, "one of [0] to [8]");
        return;
    }
    const GeneralNameSyntax& syntax = general_name_syntaxes[number];
    const Tag tag = context(number);
    out.t = syntax.alternative;
    switch (syntax.content) {
    case Content::implicit_string:
        out.value = in.string(tag, syntax.name);
        break;
    case Content::explicit_name: {
        Reader inner = in.enter(constructed(tag), syntax.name);
        const std::uint8_t* const start = inner.position();
        auto* const name = in.memory().make<ASN1T_Name>();
        decode(inner, *name, "Name");
        out.name = name;
        out.value = inner.since(start);
        inner.finish();
        break;
    }
    case Content::implicit_sequence: {
        Reader inner = in.enter(constructed(tag), syntax.name);
        out.value = inner.rest();
        while (!inner.at_end()) {
            inner.any(nullptr);
        }
        break;
    }
    }
}

void decode(Reader& in, ASN1T_GeneralNames& out, Tag tag, const char* element) {
    Reader names = in.enter(tag, element);
    out.content = names.rest();
    while (!names.at_end()) {
        decode(names, out.elements.append(in.memory()), "GeneralName");
    }
}

void decode(Reader& in, ASN1T_GeneralNames& out, const char* element) {
    decode(in, out, Tag::sequence, element);
}

void decode(Reader& in, ASN1T_DistributionPointName& out, const char* element) {
    const std::uint8_t* const start = in.position();
    if (in.next_is(constructed(context(0)))) {
        out.t = ASN1T_DistributionPointName::fullName_chosen;
        decode(in, out.fullName, constructed(context(0)), "fullName");
    } else if (in.next_is(constructed(context(1)))) {
        out.t = ASN1T_DistributionPointName::nameRelativeToCRLIssuer_chosen;
        decode(in, out.nameRelativeToCRLIssuer, constructed(context(1)), "nameRelativeToCRLIssuer");
    } else {
        in.unexpected(element, "[0] fullName or [1] nameRelativeToCRLIssuer");
    }
    out.encoding = in.since(start);
}

} // namespace norvane
