// The search for issuers: candidates, their ranks, the certificate's own issuer, URLs.
#include "World.h"
#include "chain/CertificateIssuer.h"
#include "chain/IssuerCandidates.h"
#include "items/PrivateKeyUsage.h"

namespace norvane::testing {
namespace {

std::optional<Bytes> issuer_of(World& world, const Bytes& certificate) {
    const CertificateItem* const issuer =
        resolve_issuer(world.chain, world.enter(certificate).first);
    return issuer == nullptr ? std::nullopt : std::optional(bytes_of(issuer->encoded()));
}

TEST(CertificateIssuer, IsTheFirstCandidateThatIsValidAndVerifies) {
    const Bytes expired = certify(root, root, {is_ca}, {.not_after = utc_time("260601115959Z")});
    const Bytes self_signed = certify(root, root);
    const Bytes ended = certify(root, root, {key_until_2025});
    const Bytes now = utc_time("260601120000Z");
    const Bytes for_a_moment = certify(root, root, {is_ca}, {.not_before = now, .not_after = now});
    const struct {
        Objects stored;
        std::optional<Bytes> issuer;
        StrictPkup strict = StrictPkup::off;
    } rows[] = {
        {{expired}, {}},
        {{for_a_moment}, for_a_moment},
        {{certify(root, renewed), self_signed, certify(other, root)}, self_signed},
        {{ended, self_signed}, ended},
        {{ended, self_signed}, self_signed, StrictPkup::on},
    };
    for (const auto& row : rows) {
        strict_pkup_state = row.strict;
        World world({}, row.stored);
        EXPECT_EQ(issuer_of(world, certify_subject(root)), row.issuer) << &row - rows;
    }
    strict_pkup_state = StrictPkup::off;
}

TEST(CertificateIssuer, IsSoughtByKeyIdentifierAloneOrByNameAndInStoresBySerial) {
    const Bytes id = hex("0a0b");
    const Bytes serial = hex("07");
    const Party another{"Another", root.key};
    const Bytes by_id = authority_key_identifier(id);
    const Bytes by_serial =
        authority_key_identifier({}, {directory_name(common_name("X"))}, serial);
    const struct {
        Bytes subject_extension, candidate;
        bool in_store, in_cache;
    } rows[] = {
        {by_id, certify(root, another, {subject_key_identifier(id)}), true, true},
        {by_id, certify(root, root, {subject_key_identifier(hex("0a"))}), false, false},
        {by_id, certify(root, root), false, false},
        {by_serial, certify(root, root, {is_ca}, {.serial = serial}), true, true},
        {by_serial, certify(root, root), false, true},
    };
    for (const auto& row : rows) {
        const Bytes certificate = certify_subject(root, {row.subject_extension});
        World stored({}, {row.candidate});
        EXPECT_EQ(issuer_of(stored, certificate).has_value(), row.in_store) << &row - rows;
        World known;
        known.enter(row.candidate);
        EXPECT_EQ(issuer_of(known, certificate).has_value(), row.in_cache) << &row - rows;
    }
}

TEST(IssuerCandidates, AreRankedAsAnchorsThenFoundGoodThenByDiscovery) {
    World world;
    auto& plain = world.enter(certify(other, root));
    auto& good = world.enter(certify(other, root, {}));
    auto& anchor = world.enter(certify(root, root));
    anchor.second.trusted = true;
    auto& untrusted = world.enter(certify(root, root, {}));
    const IssuerSearchKey key = make_issuer_key(world.enter(certify_subject(root)).first);
    const CertificateItemSet nobody;
    IssuerCandidateSearch search(key, nobody);
    for (auto* const candidate : {&untrusted, &plain, &good, &anchor, &plain, &untrusted})
        search.add_candidate(*candidate);
    good.second.revocation_good = true;
    search.add_candidate(good);
    std::vector<const void*> ranks;
    for (const IssuerCandidate& candidate : search.candidates())
        ranks.push_back(candidate.certificate);
    // The untrusted are entered as often as they are found; a better score stands beside the old.
    EXPECT_EQ(ranks, (decltype(ranks){&anchor, &good, &untrusted, &plain, &good, &untrusted}));
}

TEST(AuthorityInfoAccess, IsAskedInTheCacheFirstAndOverTheWireOnlyIfThatIsNotEnough) {
    constexpr const char* ca_issuers = "1.3.6.1.5.5.7.48.2";
    const Bytes wrong = certify(other, {"Root", Key::ec(9)});
    const Bytes issuer = certify(other, root);
    const Bytes certificate = certify_subject(
        root, {extension("1.3.6.1.5.5.7.1.1", Critical::no,
                         sequence(sequence(oid("1.3.6.1.5.5.7.48.1"), url("ocsp")),
                                  sequence(oid(ca_issuers), url("1")),
                                  sequence(oid(ca_issuers), directory_name(common_name("Root"))),
                                  sequence(oid(ca_issuers), url("2"))))});
    World world;
    // What is left of a time-out that is shared does not matter here.
    world.chain.chain_flags |= chain_accumulative_timeout;
    world.chain.retrieval_timeout = from_milliseconds(7);
    world.chain.timeout_spent = from_milliseconds(6);
    faked.served = {{"1", {wrong}}, {"2", {issuer}}};
    EXPECT_EQ(issuer_of(world, certificate), issuer);
    std::vector<Retrieval> asked;
    for (const DWORD flags : {3U, 1U})
        for (const char* location : {"1", "2"})
            asked.push_back({location, flags, 7, CONTEXT_OID_CERTIFICATE});
    EXPECT_EQ(faked.retrievals, asked);
}

} // namespace
} // namespace norvane::testing
