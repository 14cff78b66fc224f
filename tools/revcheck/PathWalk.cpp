#include "PathWalk.h"

#include "CrlFacts.h"
#include "ObjectInput.h"
#include "Text.h"
#include "Times.h"

#include "items/CRLItem.h"
#include "items/CertificateItem.h"
#include "values/EncodeValue.h"
#include "values/ObjectIdentifierText.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace norvane {
namespace {

/// Paths in use have a handful of steps; this ends a ring.
constexpr int max_steps = 16;

constexpr const char* id_ad_ca_issuers = "1.3.6.1.5.5.7.48.2"; // RFC 5280 4.2.2.1

constexpr std::uint32_t crl_sign_bit = 6; // Of KeyUsage, RFC 5280 4.2.1.3.

struct Certificate {
    CertificateHandle context;
    CertificateItem item;

    explicit Certificate(PCCERT_CONTEXT shown)
        : context(CertDuplicateCertificateContext(shown)),
          item(CACMPT_BLOB(shown->pbCertEncoded, shown->cbCertEncoded)) {}

    [[nodiscard]] std::string subject() const { return name_text(context->pCertInfo->Subject); }
    [[nodiscard]] std::string issuer() const { return name_text(context->pCertInfo->Issuer); }
};
using Certificates = std::vector<std::unique_ptr<Certificate>>;

/// What `test` gives, or false if the bytes do not allow it: a signature of an algorithm that
/// nobody knows, a name that is none.
template <class Test>
bool holds(Test test) {
    try {
        return test();
    } catch (const CAException&) {
        return false;
    }
}

bool is_valid_at(const CERT_INFO& certificate, const FILETIME& time) {
    return compare(certificate.NotBefore, time) <= 0 && compare(time, certificate.NotAfter) <= 0;
}

bool has_key_of(const CRLItem& crl, const Certificate& signer) {
    return holds([&] {
        return crl.verify_with_key(signer.item.decoded()->tbsCertificate.subjectPublicKeyInfo);
    });
}

/// The URLs that the distribution points name.
std::vector<std::string> urls_of(const DistributionPointList* points) {
    std::vector<std::string> urls;
    if (points == nullptr) {
        return urls;
    }
    for (const DistributionPointItem& point : *points) {
        if (!point.distribution_point) {
            continue;
        }
        ASN1T_DistributionPointName name;
        const CACMPT_BLOB& encoded = *point.distribution_point;
        decode_value({encoded.data, encoded.length}, name, source_module::chain_base, __LINE__);
        for (const ASN1T_GeneralName& alternative : name.fullName.elements) {
            if (alternative.t == ASN1T_GeneralName::uniformResourceIdentifier) {
                urls.emplace_back(alternative.value.begin(), alternative.value.end());
            }
        }
    }
    return urls;
}

/// Whether an earlier retrieval has left something of the kind for the URL.
bool is_cached(const std::string& url, LPCSTR kind) {
    void* store = nullptr;
    const BOOL found = CryptRetrieveObjectByUrlA(
        url.c_str(), kind, CRYPT_CACHE_ONLY_RETRIEVAL | CRYPT_RETRIEVE_MULTIPLE_OBJECTS, 0, &store,
        nullptr, nullptr, nullptr, nullptr);
    const StoreHolder held(store);
    return found != FALSE;
}

class Walk {
  public:
    explicit Walk(const Surroundings& around) : around_(around) {}

    std::vector<std::string> from(PCCERT_CONTEXT certificate) {
        start_ = certificate;
        auto here = std::make_unique<Certificate>(certificate);
        for (int step = 0; step < max_steps; ++step) {
            Certificates issuers = find_issuers(*here);
            if (issuers.empty()) {
                return std::move(lines_);
            }
            if (!find_crl(*here, issuers)) {
                return std::move(lines_);
            }
            for (const auto& issuer : issuers) {
                if (is_in_root(*issuer)) {
                    return nothing_found();
                }
            }
            here = std::move(issuers.front());
            if (here->context->pCertInfo->Subject.cbData != 0 && holds([&] {
                    return names_equal(here->item.subject_name(), here->item.issuer_name());
                })) {
                say("the path ends at " + here->subject() + ", which is not in the store Root");
                say("if you trust it, give it with --root");
                return std::move(lines_);
            }
        }
        return nothing_found();
    }

  private:
    void say(std::string line) { lines_.push_back(std::move(line)); }

    std::vector<std::string> nothing_found() {
        say("issuers, current CRLs of theirs and a trusted root are there");
        say("probable reason: no CRL covers this certificate with all reasons, or the signer of "
            "one could not be checked");
        return std::move(lines_);
    }

    [[nodiscard]] bool is_in_root(const Certificate& sought) const {
        bool found = false;
        for_each_certificate(around_.root, [&](PCCERT_CONTEXT each) {
            found =
                found || (each->cbCertEncoded == sought.context->cbCertEncoded &&
                          std::equal(each->pbCertEncoded, each->pbCertEncoded + each->cbCertEncoded,
                                     sought.context->pbCertEncoded));
        });
        return found;
    }

    template <class Visit>
    static void for_each_certificate(HCERTSTORE store, Visit visit) {
        PCCERT_CONTEXT each = nullptr;
        while ((each = CertEnumCertificatesInStore(store, each)) != nullptr) {
            visit(each);
        }
    }

    /// A key identifier in the certificate counts alone, as it does for the decision.
    static bool may_be_issuer(const Certificate& candidate, const Certificate& certificate) {
        const CACMPT_BLOB& key = certificate.item.authority_key_id();
        return key.length != 0
                   ? candidate.item.subject_key_identifier() == key
                   : names_equal(candidate.item.subject_name(), certificate.item.issuer_name());
    }

    /// The certificates that may have issued this one; says what is missing if there are none.
    Certificates find_issuers(const Certificate& certificate) {
        Certificates named;
        const auto look_at = [&](PCCERT_CONTEXT each) {
            auto candidate = std::make_unique<Certificate>(each);
            if (holds([&] { return may_be_issuer(*candidate, certificate); })) {
                named.push_back(std::move(candidate));
            }
        };
        if (around_.issuer != nullptr) {
            look_at(around_.issuer);
        }
        for (HCERTSTORE store : around_.certs) {
            for_each_certificate(store, look_at);
        }
        if (named.empty()) {
            say("no certificate of " + certificate.issuer() + " is in the stores");
            const CACMPT_BLOB& key = certificate.item.authority_key_id();
            if (key.length != 0) {
                say("its key identifier would be " + hexadecimal_text(key.data, key.length));
            }
            say_about_source(issuer_url(certificate), CONTEXT_OID_CERTIFICATE);
            say("if you have it, give it with --certs or --issuer");
            return named;
        }
        Certificates issuers;
        for (auto& candidate : named) {
            const auto& key = candidate->item.decoded()->tbsCertificate.subjectPublicKeyInfo;
            if (holds([&] { return certificate.item.verify_with_key(key); })) {
                issuers.push_back(std::move(candidate));
            }
        }
        if (issuers.empty()) {
            say("no certificate of " + certificate.issuer() +
                " in the stores verifies the signature on that of " + certificate.subject());
            return issuers;
        }
        const CERT_INFO first = *issuers.front()->context->pCertInfo;
        std::erase_if(issuers, [&](const auto& issuer) {
            return !is_valid_at(*issuer->context->pCertInfo, around_.time);
        });
        if (issuers.empty()) {
            say("the certificate of " + certificate.issuer() + " is valid from " +
                time_text(first.NotBefore) + " to " + time_text(first.NotAfter) +
                ", and not at the time of the check, " + time_text(around_.time));
        }
        return issuers;
    }

    /// Where the certificate says that its issuer's may be had; empty if it does not.
    [[nodiscard]] static std::string issuer_url(const Certificate& certificate) {
        const auto* const access = certificate.item.authority_info_access();
        if (access == nullptr) {
            return {};
        }
        for (const ASN1T_AccessDescription& each : access->elements) {
            if (each.accessMethod == str_to_oid(id_ad_ca_issuers) &&
                each.accessLocation.t == ASN1T_GeneralName::uniformResourceIdentifier) {
                return {each.accessLocation.value.begin(), each.accessLocation.value.end()};
            }
        }
        return {};
    }

    void say_about_source(const std::string& url, LPCSTR kind) {
        if (url.empty()) {
            say("the certificate does not say where to find one");
        } else if (!is_cached(url, kind)) {
            say("nothing from " + url + " is in the cache");
            if (around_.retrieval == Retrieval::from_network) {
                say("probable reason: it could not be retrieved");
            }
        }
    }

    /// Whether there is a CRL for the certificate; says what is missing if not. A CRL that only the
    /// cache has is taken for one.
    bool find_crl(const Certificate& certificate, const Certificates& issuers) {
        const std::vector<std::string> urls = urls_of(certificate.item.crl_distribution_points());
        for (const std::string& url : urls) {
            if (is_cached(url, CONTEXT_OID_CRL)) {
                return true;
            }
        }
        CrlHandle newest_base;
        CrlHandle newest_delta;
        PCCRL_CONTEXT each = nullptr;
        while ((each = CertFindCRLInStore(around_.crls, 0, 0, CRL_FIND_ANY, nullptr, each)) !=
               nullptr) {
            const CERT_NAME_BLOB& name = each->pCrlInfo->Issuer;
            const CACMPT_CERT_NAME issuer(CACMPT_BLOB(name.pbData, name.cbData));
            if (!holds([&] { return names_equal(issuer, certificate.item.issuer_name()); })) {
                continue;
            }
            CrlHandle& newest = is_delta(*each->pCrlInfo) ? newest_delta : newest_base;
            if (newest == nullptr ||
                compare(newest->pCrlInfo->ThisUpdate, each->pCrlInfo->ThisUpdate) < 0) {
                newest.reset(CertDuplicateCRLContext(each));
            }
        }
        if (newest_base == nullptr) {
            say("no CRL of " + certificate.issuer() + " is in the stores");
            say_about_source(urls.empty() ? std::string() : urls.front(), CONTEXT_OID_CRL);
            say("if you have it, give it with --crls");
            return false;
        }
        const bool needs_delta =
            names_deltas(*newest_base->pCrlInfo) || certificate.item.freshest_crl() != nullptr;
        if (needs_delta && newest_delta == nullptr) {
            say("the CRL of " + certificate.issuer() +
                " must be completed by a delta CRL, and none is in the stores");
            return false;
        }
        const CrlHandle& timely = needs_delta ? newest_delta : newest_base;
        return is_current(certificate, *timely->pCrlInfo) &&
               is_signed(certificate, *newest_base, issuers) &&
               is_unlisted(certificate, needs_delta ? newest_delta.get() : nullptr) &&
               is_unlisted(certificate, newest_base.get());
    }

    /// For members of the path; that the certificate itself is listed would have been the verdict.
    bool is_unlisted(const Certificate& certificate, PCCRL_CONTEXT crl) {
        PCRL_ENTRY entry = nullptr;
        if (crl == nullptr || certificate.context.get() == start_ ||
            CertFindCertificateInCRL(certificate.context.get(), crl, 0, nullptr, &entry) == FALSE ||
            entry == nullptr) {
            return true;
        }
        say("the certificate of " + certificate.subject() + ", serial " +
            serial_text(entry->SerialNumber) + ", is listed in a CRL of " + certificate.issuer() +
            " itself");
        return false;
    }

    bool is_current(const Certificate& certificate, const CRL_INFO& crl) {
        const std::string which =
            std::string(is_delta(crl) ? "the newest delta CRL" : "the newest CRL") + " of " +
            certificate.issuer() + " in the stores";
        if (compare(crl.ThisUpdate, around_.time) > 0) {
            say(which + " begins at " + time_text(crl.ThisUpdate) +
                ", after the time of the check, " + time_text(around_.time));
            return false;
        }
        if (!is_set(crl.NextUpdate)) {
            say(which + " does not say until when it is good");
            return false;
        }
        if (compare(crl.NextUpdate, around_.time) < 0) {
            say(which + " ran out at " + time_text(crl.NextUpdate) +
                ", before the time of the check, " + time_text(around_.time));
            return false;
        }
        return true;
    }

    bool is_signed(const Certificate& certificate, const CRL_CONTEXT& crl,
                   const Certificates& issuers) {
        const CRLItem item(CACMPT_BLOB(crl.pbCrlEncoded, crl.cbCrlEncoded));
        for (const auto& issuer : issuers) {
            if (!has_key_of(item, *issuer)) {
                continue;
            }
            const ASN1T_KeyUsage* const usage = issuer->item.key_usage();
            if (usage == nullptr || ASN1CBitStr(usage->bits).get(crl_sign_bit)) {
                return true;
            }
            say("the certificate of " + certificate.issuer() +
                " does not allow its key to sign CRLs (keyUsage without cRLSign)");
            return false;
        }
        say("the newest CRL of " + certificate.issuer() +
            " in the stores is not signed with the key of the certificate's issuer");
        say("probable reason: its signature is wrong, or its signer's certificate is missing");
        return false;
    }

    const Surroundings& around_;
    PCCERT_CONTEXT start_ = nullptr;
    std::vector<std::string> lines_;
};

} // namespace

std::vector<std::string> walk_path(PCCERT_CONTEXT certificate, const Surroundings& around) {
    return Walk(around).from(certificate);
}

} // namespace norvane
