#include "platform/crypto/GostKeyInfo.h"

#include "platform/crypto/DerFields.h"

namespace norvane {
namespace {

GostKeyParameters::Text text_of(const ASN1TObjId& oid) {
    GostKeyParameters::Text text{};
    ASN1OBJID arcs;
    if (!oid.get_arcs(arcs) || rtOidToStr(arcs, text.data(), text.size()) == 0) {
        text = {};
    }
    return text;
}

} // namespace

std::optional<GostKeyParameters> read_gost_parameters(Octets parameters) {
    ASN1CTXT ctxt;
    GostKeyParameters read;
    const bool decoded = read_der(ctxt, parameters, [&](Reader& in) {
        const auto identifier = [](Reader& fields, const char* element) {
            return text_of(fields.object_identifier(Tag::object_identifier, element));
        };
        Reader fields = in.enter(Tag::sequence, "PublicKeyParameters");
        read.public_key_set = identifier(fields, "publicKeyParamSet");
        read.digest_set =
            fields.at_end() ? GostKeyParameters::Text{} : identifier(fields, "digestParamSet");
        if (!fields.at_end()) {
            static_cast<void>(identifier(fields, "encryptionParamSet"));
        }
        fields.finish();
    });
    return decoded ? std::optional(read) : std::nullopt;
}

bool is_digest_set(const GostKeyParameters& parameters, std::string_view set) {
    const std::string_view named = parameters.digest_set.data();
    return named.empty() || named == set;
}

std::optional<std::vector<std::uint8_t>> read_gost_key(Octets key, std::size_t size) {
    ASN1CTXT ctxt;
    ByteView octets;
    const bool decoded = read_der(
        ctxt, key, [&](Reader& in) { octets = in.string(Tag::octet_string, "PublicKey"); });
    return decoded && octets.length == size
               ? std::optional(std::vector<std::uint8_t>(octets.begin(), octets.end()))
               : std::nullopt;
}

Botan::BigInt little_endian_number(Octets octets) {
    const std::vector<std::uint8_t> reversed(octets.rbegin(), octets.rend());
    return big_endian_number(reversed);
}

Botan::BigInt big_endian_number(Octets octets) { return {octets.data(), octets.size()}; }

std::optional<GostSignature> GostSignature::read(Octets octets, std::size_t size,
                                                 const Botan::BigInt& order) {
    if (octets.size() != 2 * size) {
        return std::nullopt;
    }
    GostSignature signature{big_endian_number(octets.first(size)),
                            big_endian_number(octets.last(size))};
    const auto is_in_range = [&order](const Botan::BigInt& number) {
        return number.is_nonzero() && number < order;
    };
    return is_in_range(signature.s) && is_in_range(signature.r)
               ? std::optional(std::move(signature))
               : std::nullopt;
}

} // namespace norvane
