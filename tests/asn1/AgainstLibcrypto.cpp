#include "asn1/AgainstLibcrypto.h"

#include "asn1/Decoded.h"
#include "asn1/MinimalLengths.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <openssl/err.h>
#include <openssl/x509v3.h>

namespace norvane::testing {
namespace {

void require(bool same, const char* what) {
    if (!same) {
        throw std::logic_error(std::string("libcrypto has other ") + what);
    }
}

Bytes octets(const ASN1_STRING* string) {
    const std::uint8_t* const data = ASN1_STRING_get0_data(string);
    return {data, data + ASN1_STRING_length(string)};
}

// What libcrypto writes for an object of its own.
Bytes written(const auto* object, auto encode) {
    std::uint8_t* out = nullptr;
    const int size = encode(object, &out);
    const std::shared_ptr<void> owner(out, [](void* block) { OPENSSL_free(block); });
    return size > 0 ? Bytes(out, out + size) : Bytes();
}

void compare(const ASN1TInteger& ours, const ASN1_INTEGER* theirs) {
    require(integer_octets(bytes_of(ours.content())) == written(theirs, i2d_ASN1_INTEGER),
            "serial number");
}

// libcrypto keeps the lengths that a name came with.
void compare(ASN1T_Name& ours, const X509_NAME* theirs) {
    const Bytes kept = written(theirs, i2d_X509_NAME);
    MinimalLengths minimal(view(kept));
    require(minimal.measure().status == ASN1Status::ok, "lengths in a name");
    ASN1BEREncodeBuffer buffer;
    const int length = ASN1C_Name(buffer, ours).EncodeTo(buffer);
    require(length >= 1 && ByteView{buffer.getMsgPtr(), static_cast<std::uint32_t>(length)} ==
                               minimal.rewrite(buffer.getCtxt()),
            "name");
}

void compare(const ASN1T_Time& ours, const ASN1_TIME* theirs) {
    const bool utc = ours.t == ASN1T_Time::utcTime_chosen;
    require(text_bytes(ours.text) == octets(theirs), "text of a time");
    require(ASN1_STRING_type(theirs) == (utc ? V_ASN1_UTCTIME : V_ASN1_GENERALIZEDTIME),
            "type of time");
}

void compare(const auto& ours, const STACK_OF(X509_EXTENSION) * theirs) {
    int index = 0;
    for (const ASN1T_Extension& extension : ours) {
        X509_EXTENSION* const other = sk_X509_EXTENSION_value(theirs, index++);
        require(other != nullptr, "count of extensions");
        const ASN1_OBJECT* const oid = X509_EXTENSION_get_object(other);
        require(extension.extnID.content() ==
                    ByteView{OBJ_get0_data(oid), static_cast<std::uint32_t>(OBJ_length(oid))},
                "type of extension");
        require(extension.critical == (X509_EXTENSION_get_critical(other) == 1), "critical flag");
        require(bytes_of(extension.extnValue) == octets(X509_EXTENSION_get_data(other)),
                "value of an extension");
    }
    require(index == std::max(sk_X509_EXTENSION_num(theirs), 0), "count of extensions");
}

// libcrypto's object, or null where it does not accept all of the input.
template <class T, auto decode, auto release>
std::shared_ptr<T> read(ByteView input) {
    const std::uint8_t* at = input.data;
    std::shared_ptr<T> object(decode(nullptr, &at, static_cast<long>(input.length)), release);
    ERR_clear_error();
    return at == input.end() ? object : nullptr;
}

} // namespace

bool both_accept_certificate(ByteView input) {
    const auto theirs = read<X509, d2i_X509, X509_free>(input);
    Decoded<ASN1T_Certificate> decoded(bytes_of(input));
    if (theirs == nullptr || decoded.status < 0) {
        return false;
    }
    ASN1T_TBSCertificate& ours = decoded.value.tbsCertificate;
    compare(ours.serialNumber, X509_get0_serialNumber(theirs.get()));
    compare(ours.issuer, X509_get_issuer_name(theirs.get()));
    compare(ours.subject, X509_get_subject_name(theirs.get()));
    compare(ours.validity.notBefore, X509_get0_notBefore(theirs.get()));
    compare(ours.validity.notAfter, X509_get0_notAfter(theirs.get()));
    compare(ours.extensions, X509_get0_extensions(theirs.get()));
    return true;
}

bool both_accept_list(ByteView input) {
    const auto theirs = read<X509_CRL, d2i_X509_CRL, X509_CRL_free>(input);
    Decoded<ASN1T_CertificateList> decoded(bytes_of(input));
    if (theirs == nullptr || decoded.status < 0) {
        return false;
    }
    ASN1T_TBSCertList& ours = decoded.value.tbsCertList;
    compare(ours.issuer, X509_CRL_get_issuer(theirs.get()));
    compare(ours.thisUpdate, X509_CRL_get0_lastUpdate(theirs.get()));
    const ASN1_TIME* const next_update = X509_CRL_get0_nextUpdate(theirs.get());
    require((next_update != nullptr) == (ours.m.nextUpdatePresent != 0), "nextUpdate");
    if (next_update != nullptr) {
        compare(ours.nextUpdate, next_update);
    }
    compare(ours.crlExtensions, X509_CRL_get0_extensions(theirs.get()));

    // They are in the order of the file until somebody looks one up.
    const STACK_OF(X509_REVOKED)* const entries = X509_CRL_get_REVOKED(theirs.get());
    int index = 0;
    for (const ASN1T_RevokedCertificate& entry : ours.revokedCertificates) {
        const X509_REVOKED* const other = sk_X509_REVOKED_value(entries, index++);
        require(other != nullptr, "count of entries");
        compare(entry.userCertificate, X509_REVOKED_get0_serialNumber(other));
        compare(entry.revocationDate, X509_REVOKED_get0_revocationDate(other));
        compare(entry.crlEntryExtensions, X509_REVOKED_get0_extensions(other));
    }
    require(index == std::max(sk_X509_REVOKED_num(entries), 0), "count of entries");
    return true;
}

} // namespace norvane::testing
