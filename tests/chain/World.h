// A small PKI, and a run in it with stores of its own.
#pragma once

#include "FakedPlatform.h"
#include "chain/Chain.h"
#include "platform/StoreMaterial.h"
#include "values/CompareTimes.h"

#include <algorithm>

namespace norvane::testing {

// Somebody with a name and a key. Two with one name are a CA before and after its key changed.
struct Party {
    std::string name;
    const Key& key = Key::ec(0);
};
inline const Party root{"Root", Key::ec(0)};
inline const Party renewed{"Root", Key::ec(1)};
inline const Party inter{"Inter", Key::ec(2)};
inline const Party other{"Other", Key::ec(3)};
inline const Party subject{"Subject", Key::ec(4)};

inline const Bytes subject_serial = hex("05");
inline const Bytes is_ca = basic_constraints(Holder::ca);

inline Bytes certify(const Party& issuer, const Party& holder, const Objects& extensions = {is_ca},
                     CertificateBuilder builder = {}) {
    builder.issuer = common_name(issuer.name);
    builder.subject = common_name(holder.name);
    builder.spki = holder.key.spki();
    builder.extensions = extensions;
    return builder.sign(issuer.key);
}
inline Bytes certify_subject(const Party& issuer, const Objects& extensions = {}) {
    return certify(issuer, subject, extensions, {.serial = subject_serial});
}
inline Bytes list(const Party& issuer, const std::vector<CrlEntry>& entries = {},
                  const Objects& extensions = {}, CrlBuilder builder = {}) {
    builder.issuer = common_name(issuer.name);
    builder.entries = entries;
    builder.extensions = extensions;
    return builder.sign(issuer.key);
}
inline CrlEntry revoked(int reason) {
    return {.serial = subject_serial, .extensions = {reason_code(reason)}};
}

inline CACMPT_BLOB blob(const Bytes& bytes) { return {bytes.data(), size_of(bytes)}; }
inline Bytes bytes_of(const CACMPT_BLOB& blob) { return {blob.data, blob.data + blob.length}; }

// A private key usage period.
inline const Bytes key_until_2025 = extension(
    "2.5.29.16", Critical::no, sequence(context_primitive(1, text_bytes("20250101000000Z"))));

// A run at noon of 1 June 2026, which trusts some certificates, with one store for certificates and
// one for CRLs. Making one resets the faked platform.
struct World {
    explicit World(const Objects& trusted = {}, const Objects& stored = {},
                   const Objects& listed = {}) {
        faked = {};
        set_time(chain.verify_time, {2026, 6, 0, 1, 12, 0, 0, 0});
        chain.cert_stores.emplace(certs.get());
        chain.crl_stores.emplace(crls.get());
        for (const Bytes& encoded : trusted)
            enter(encoded).second.trusted = true;
        for (const Bytes& encoded : stored)
            certs.add(encoded);
        for (const Bytes& encoded : listed)
            crls.add_crl(encoded);
    }

    // Makes the run know a certificate or a CRL.
    ItemCache::value_type& enter(const Bytes& encoded) {
        return cache_certificate(chain.item_cache, CertificateItem(blob(encoded)), {});
    }
    const CRLItem& enter_crl(const Bytes& encoded) {
        return cache_crl(chain.crl_item_cache, CRLItem(blob(encoded)), {}).first;
    }
    // As the export does it.
    RunStatus verify(const Bytes& encoded) {
        const CertificateItem& item = enter(encoded).first;
        chain.revocation_in_progress.insert(&item);
        return norvane::verify(chain, item, result);
    }

    OpenStore certs = OpenStore::memory();
    OpenStore crls = OpenStore::memory();
    ChainValidator chain;
    CertificateCacheInfo result;
};

inline Objects certificates_of(const Chain& path) {
    Objects all;
    for (const CertificateChainItem& element : path.items)
        all.push_back(bytes_of(element.item().encoded()));
    return all;
}

} // namespace norvane::testing
