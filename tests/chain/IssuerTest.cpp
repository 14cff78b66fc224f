// The search for issuers: candidates, their ranks, the certificate's own issuer, URLs.
#include "World.h"
#include "chain/CertificateIssuer.h"
#include "chain/IssuerCandidates.h"
#include "items/PrivateKeyUsage.h"
#include "values/Exceptions.h"

namespace norvane::testing {
namespace {

std::optional<Bytes> issuer_of(World& world, const Bytes& certificate) {
    const CertificateItem* const issuer =
        resolve_issuer(world.chain, world.enter(certificate).first);
    return issuer == nullptr ? std::nullopt : std::optional(bytes_of(issuer->encoded()));
}

TEST(CertificateIssuer, IsTheFirstCandidateThatIsValidAndVerifies) {
    const auto valid = [](const char* from, const char* to) {
        return certify(root, root, {is_ca},
                       {.not_before = utc_time(from), .not_after = utc_time(to)});
    };
    const Bytes self_signed = certify(root, root);
    const Bytes ended = certify(root, root, {key_until("2025")});
    const Bytes at_its_end = valid("250101000000Z", "260601120000Z");
    const Bytes at_its_beginning = valid("260601120000Z", "350101000000Z");
    const struct {
        Objects stored;
        std::optional<Bytes> issuer;
        StrictPkup strict = StrictPkup::off;
    } rows[] = {
        {{at_its_end}, at_its_end},
        {{valid("250101000000Z", "260601115959Z")}, {}},
        {{at_its_beginning}, at_its_beginning},
        {{valid("260601120001Z", "350101000000Z")}, {}},
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
    const Bytes by_name = key_usage(named_bits({digital_signature}));
    const Bytes by_id = authority_key_identifier(id);
    const Bytes by_serial =
        authority_key_identifier({}, {directory_name(common_name("X"))}, serial);
    const struct {
        Bytes subject_extension, candidate;
        bool in_store, in_cache;
    } rows[] = {
        {by_name, certify(root, root), true, true},
        {by_name, certify(root, another), false, false},
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
    auto& anchor = world.enter(certify(root, root), Trusted::yes);
    auto& untrusted = world.enter(certify(root, root, {}));
    const IssuerSearchKey key = make_issuer_key(world.enter(certify_subject(root)).first);
    const CertificateItemSet nobody;
    const CertificateItemSet excluded{&plain.first, &anchor.first, &untrusted.first};

    IssuerCandidateSearch search(key, nobody);
    for (auto* const candidate : {&untrusted, &plain, &good, &anchor, &plain, &untrusted})
        search.add_candidate(*candidate);
    good.second.revocation_good = true;
    search.add_candidate(good);
    search.add_candidate(good);
    std::vector<std::pair<std::int32_t, const void*>> ranks;
    for (const IssuerCandidate& candidate : search.candidates())
        ranks.emplace_back(candidate.score, candidate.certificate);
    // What scores 0 for want of trust is entered as often as it is found; a better score stands
    // beside the old one.
    EXPECT_EQ(
        ranks,
        (decltype(ranks){
            {10, &anchor}, {3, &good}, {0, &untrusted}, {0, &plain}, {0, &good}, {0, &untrusted}}));

    const IssuerCandidateSearch excluding(key, excluded);
    EXPECT_EQ(excluding.score_candidate(anchor), -1);
    EXPECT_EQ(excluding.score_candidate(plain), -1);
    EXPECT_EQ(excluding.score_candidate(untrusted), 0) << "excluded, but kept for its record";
}

TEST(AuthorityInfoAccess, IsAskedInTheCacheFirstAndOverTheWireOnlyIfThatIsNotEnough) {
    constexpr const char* ca_issuers = "1.3.6.1.5.5.7.48.2";
    const Bytes unrelated = certify(other, {"Unrelated", Key::ec(9)});
    const Bytes wrong = certify(other, {"Root", Key::ec(9)});
    const Bytes issuer = certify(other, root);
    const Bytes certificate = certify_subject(
        root, {extension("1.3.6.1.5.5.7.1.1", Critical::no,
                         sequence(sequence(oid("1.3.6.1.5.5.7.48.1"), url("ocsp")),
                                  sequence(oid(ca_issuers), url("1")),
                                  sequence(oid(ca_issuers), directory_name(common_name("Root"))),
                                  sequence(oid(ca_issuers), url("2"))))});
    const struct {
        std::uint32_t flags;
        bool cached;
        std::optional<Bytes> found;
        std::vector<DWORD> asked; // each time both URLs
    } rows[] = {
        {0, false, issuer, {3, 1}},
        {0, true, issuer, {3}},
        {chain_cache_only, false, {}, {3}},
        {ChainFlagCacheOnlyUrl, false, {}, {3, 3}},
    };
    for (const auto& row : rows) {
        World world;
        // What is left of a time-out that is shared does not matter here.
        world.chain.chain_flags |= row.flags | chain_accumulative_timeout;
        world.chain.retrieval_timeout = from_milliseconds(7);
        world.chain.timeout_spent = from_milliseconds(6);
        faked.served = {{"1", {wrong, unrelated}}, {"2", {issuer}}};
        if (row.cached)
            faked.cached = faked.served;
        EXPECT_EQ(issuer_of(world, certificate), row.found);
        std::vector<Retrieval> asked;
        for (const DWORD flags : row.asked)
            for (const char* location : {"1", "2"})
                asked.push_back({location, flags, 7, CONTEXT_OID_CERTIFICATE});
        EXPECT_EQ(faked.retrievals, asked);
        EXPECT_EQ(world.chain.timeout_spent, from_milliseconds(6));
        EXPECT_EQ(world.chain.item_cache.size(), row.found ? 4U : 1U) << "all that came is kept";
        if (!row.found) {
            EXPECT_EQ(GetLastError(), 0U) << "of the retrievals that failed";
        }
    }
    World endless;
    endless.chain.retrieval_timeout = from_milliseconds(0x7FFFFFFF);
    EXPECT_THROW(static_cast<void>(issuer_of(endless, certificate)), CAException);
}

} // namespace
} // namespace norvane::testing
