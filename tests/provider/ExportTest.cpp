// The export: fields that may be absent, lists, and who owns what it hands out.
#include "chain/World.h"
#include "support/RecordWalk.h"
#include "support/TemporaryFolder.h"

#include <norvane/revocation.h>

#include <functional>

namespace norvane::testing {
namespace {

constexpr auto no_check = static_cast<DWORD>(CRYPT_E_NO_REVOCATION_CHECK);
constexpr auto is_revoked = static_cast<DWORD>(CRYPT_E_REVOKED);
constexpr DWORD untouched = 0x77777777;

// Certificates and CRLs are valid at any time that the clock may show.
const CertificateBuilder always{.not_before = utc_time("000101000000Z"),
                                .not_after = utc_time("490101000000Z")};
const CrlBuilder from_2000{.this_update = utc_time("000101000000Z"),
                           .next_update = utc_time("481231000000Z")};
Bytes leaf(const Party& issuer, const Bytes& serial, const Objects& extensions = {}) {
    CertificateBuilder builder = always;
    builder.serial = serial;
    return certify(issuer, subject, extensions, builder);
}
const Bytes at_url = crl_distribution_points({{.full_name = {url("a")}}});
const Bytes inter_cert = certify(root, inter, {is_ca}, always);
const Bytes good_leaf = leaf(root, hex("01")), revoked_leaf = leaf(root, subject_serial, {at_url});
const Bytes url_leaf = leaf(root, hex("01"), {at_url});
const Bytes inter_leaf = leaf(inter, hex("01")); // whose issuer the stores do not have

// The system stores of this process: one anchor; its CRL and that of the CA.
const TemporaryFolder stores;
bool configure() {
    const auto write = [](const char* file, const Bytes& content) {
        const auto* const text = reinterpret_cast<const char*>(content.data());
        return exists(stores.write(file, {text, content.size()}));
    };
    return write("Root/root.crt", certify(root, root, {is_ca}, always)) &&
           write("CA/root.crl", list(root, {revoked(1)}, {}, from_2000)) &&
           write("CA/inter.crl", list(inter, {}, {}, from_2000)) &&
           NorvaneSetConfiguration("stores", "Root", (stores.path() / "Root").c_str()) != FALSE &&
           NorvaneSetConfiguration("stores", "CA", (stores.path() / "CA").c_str()) != FALSE;
}
const bool configured = configure();

struct Call {
    Call() {
        EXPECT_TRUE(configured);
        faked = {};
        info.cbSize = sizeof info;
        para.cbSize = sizeof para;
        para.pCrlInfo = &info;
    }
    ~Call() {
        for (const PCCRL_CONTEXT context : {info.pBaseCrlContext, info.pDeltaCrlContext})
            if (context != nullptr)
                CertFreeCRLContext(context);
    }
    BOOL verify(const Objects& certificates) {
        std::vector<CertificateContext> contexts;
        std::vector<void*> pointers;
        for (const Bytes& encoded : certificates) {
            contexts.push_back(certificate_context(encoded));
            pointers.push_back(const_cast<CERT_CONTEXT*>(contexts.back().get()));
        }
        return CertDllVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE,
                                       static_cast<DWORD>(pointers.size()), pointers.data(), 0,
                                       &para, &status);
    }
    void expect_failure(DWORD error, DWORD index, DWORD reason = 0) const {
        EXPECT_EQ(GetLastError(), error);
        EXPECT_EQ(std::tuple(status.dwError, status.dwIndex, status.dwReason),
                  std::tuple(error, index, reason));
    }

    CERT_REVOCATION_CRL_INFO info{};
    CERT_REVOCATION_PARA para{};
    CERT_REVOCATION_STATUS status{24, untouched, untouched, untouched, 7, untouched};
};

TEST(Export, TakesAndFillsAFieldThatBeginsWithinTheSize) {
    const CertificateContext hint = certificate_context(inter_cert);
    const OpenStore with_inter = OpenStore::memory();
    with_inter.add(inter_cert);
    HCERTSTORE with_inter_handle = with_inter.get();
    const std::pair<DWORD, std::function<void(CERT_REVOCATION_PARA&)>> rows[] = {
        {8, [&](auto& para) { para.pIssuerCert = hint.get(); }},
        {24, [&](auto& para) { para.cCertStore = 1, para.rgCertStore = &with_inter_handle; }},
    };
    for (const auto& [offset, set] : rows) {
        for (const bool is_there : {true, false}) {
            Call call;
            set(call.para);
            call.para.cbSize = offset + (is_there ? 1 : 0);
            EXPECT_EQ(call.verify({inter_leaf}), is_there) << offset;
        }
    }
    for (const auto& [size, timeout] : {std::pair(48U, 5000U), std::pair(49U, 0U)}) {
        Call call;
        call.para.cbSize = size;
        EXPECT_TRUE(call.verify({url_leaf}));
        EXPECT_EQ(faked.retrievals.at(0).timeout, timeout);
    }
    for (const auto& [para_size, info_size, filled] :
         {std::tuple(72U, 40U, false), std::tuple(73U, 32U, false), std::tuple(73U, 33U, true)}) {
        Call call;
        call.para.cbSize = para_size;
        call.info.cbSize = info_size;
        EXPECT_TRUE(call.verify({good_leaf}));
        EXPECT_EQ(call.info.pBaseCrlContext != nullptr, filled);
    }
    for (const DWORD size : {12U, 13U, 16U, 17U, 20U, 21U}) {
        Call call;
        call.status.cbSize = size;
        EXPECT_EQ(call.verify({good_leaf}), size > 12);
        EXPECT_EQ(call.status.fHasFreshnessTime, size > 16 ? TRUE : 7);
        EXPECT_EQ(call.status.dwFreshnessTime == untouched, size <= 20);
    }
}

TEST(Export, EndsAListWithTheFirstCertificateThatIsNotGood) {
    Call second_revoked;
    EXPECT_FALSE(second_revoked.verify({good_leaf, revoked_leaf, url_leaf}));
    second_revoked.expect_failure(is_revoked, 1, 1);
    EXPECT_EQ(faked.retrievals.size(), 2U) << "the third is not looked at";
    ASSERT_NE(second_revoked.info.pCrlEntry, nullptr);
    EXPECT_EQ(bytes_of(second_revoked.info.pCrlEntry->SerialNumber), subject_serial);

    Call thrown; // general names are no name to search for
    const DistributionPoint unsearchable{.crl_issuer = {directory_name(common_name("Root"))}};
    const Bytes odd_leaf = leaf(root, hex("01"), {crl_distribution_points({unsearchable})});
    EXPECT_FALSE(thrown.verify({good_leaf, odd_leaf}));
    thrown.expect_failure(no_check, 1);

    Call unsure; // the CRLs that were consulted are not handed out
    const OpenStore partial = OpenStore::memory();
    const IssuingDistributionPoint some{.only_some_reasons = named_bits({1})};
    partial.add_crl(list(root, {}, {issuing_distribution_point(some)}, from_2000));
    unsure.para.hCrlStore = partial.get();
    EXPECT_FALSE(unsure.verify({good_leaf}));
    unsure.expect_failure(no_check, 0);
    EXPECT_EQ(unsure.status.fHasFreshnessTime, TRUE);
    EXPECT_EQ(unsure.info.pBaseCrlContext, nullptr);

    Call refused; // what cannot be handed out ends the list as if all were well
    faked.refuses_crl_contexts = true;
    EXPECT_TRUE(refused.verify({revoked_leaf, inter_leaf}));
    EXPECT_EQ(refused.status.dwError, 0U);
    EXPECT_EQ(refused.status.dwIndex, 0U);
}

TEST(Export, DoesNotLetACertificateVouchForItself) {
    // The CRL was signed by somebody whom the CA in question certified.
    const OpenStore signers = OpenStore::memory();
    const OpenStore crls = OpenStore::memory();
    signers.add(certify(inter, renewed, {}, always));
    crls.add_crl(list(renewed, {}, {}, from_2000));
    HCERTSTORE signers_handle = signers.get();
    for (const bool by_itself : {true, false}) {
        Call call;
        call.para.cCertStore = 1;
        call.para.rgCertStore = &signers_handle;
        call.para.hCrlStore = by_itself ? crls.get() : nullptr;
        EXPECT_EQ(call.verify({inter_cert}), !by_itself);
        EXPECT_TRUE(faked.questions.empty());
    }
}

TEST(Export, FreesAStaleDeltaContextAndForgetsAStaleBaseContext) {
    HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    const Bytes stale = list(other);
    Call call;
    ASSERT_TRUE(CertAddEncodedCRLToStore(store, 1, stale.data(), size_of(stale),
                                         CERT_STORE_ADD_ALWAYS, &call.info.pDeltaCrlContext));
    const CrlContext base = crl_context(stale); // would be freed twice
    call.info.pBaseCrlContext = base.get();
    EXPECT_FALSE(call.verify({revoked_leaf}));
    EXPECT_EQ(call.info.pDeltaCrlContext, nullptr);
    EXPECT_NE(call.info.pBaseCrlContext, base.get());
    EXPECT_TRUE(CertCloseStore(store, CERT_CLOSE_STORE_CHECK_FLAG)) << "nothing keeps it";
}

TEST(Export, LeavesNothingOpenAfterNestedQuestions) {
    const HCERTSTORE crls = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    const Bytes crl = list(inter, {}, {}, from_2000);
    ASSERT_TRUE(CertAddEncodedCRLToStore(crls, 1, crl.data(), size_of(crl), CERT_STORE_ADD_ALWAYS,
                                         nullptr));
    {
        const OpenStore issuers = OpenStore::memory();
        issuers.add(inter_cert);
        HCERTSTORE issuers_handle = issuers.get();
        Call call;
        call.para.cCertStore = 1;
        call.para.rgCertStore = &issuers_handle;
        call.para.hCrlStore = crls;
        EXPECT_TRUE(call.verify({inter_leaf}));
        EXPECT_EQ(faked.questions.size(), 1U) << "about the CA in the middle";
    }
    EXPECT_TRUE(CertCloseStore(crls, CERT_CLOSE_STORE_CHECK_FLAG));
}

TEST(Export, TellsThatATimeOutCannotBeCounted) {
    Call call;
    call.para.dwUrlRetrievalTimeout = 0x7FFFFFFF;
    const RecordWalk walk;
    EXPECT_FALSE(call.verify({url_leaf}));
    call.expect_failure(no_check, 0);
    EXPECT_TRUE(walk.has("timeout_too_large"));
    EXPECT_EQ(walk.outcome(), "not_checked");
}

} // namespace
} // namespace norvane::testing
