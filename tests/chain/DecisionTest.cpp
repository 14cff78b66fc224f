// The verdict about one certificate: stages, reasons, scopes, gates, delta CRLs and the two passes.
#include "World.h"
#include "values/Exceptions.h"

namespace norvane::testing {
namespace {

constexpr RunStatus good = CHAIN_STATUS_GOOD;
constexpr RunStatus settled = 65532; // in rows: good, and settled so by the first stage
constexpr RunStatus thrown = 65533;  // in rows: the run ends with an exception
constexpr RunStatus no_check = CHAIN_STATUS_NO_CHECK;

const Bytes key_id = hex("0b");
const Bytes root_cert = certify(root, root, {is_ca, subject_key_identifier(key_id)});
const Bytes renewed_cert = certify(renewed, renewed);
const Bytes inter_cert = certify(root, inter);

Bytes idp(const IssuingDistributionPoint& point) { return issuing_distribution_point(point); }
Bytes cdp(const std::vector<DistributionPoint>& points) { return crl_distribution_points(points); }
const Bytes url_a = url("a"), url_b = url("b");
const Bytes point_a = cdp({{.full_name = {url_a}}});

struct Row {
    const char* what;
    Objects extensions; // of the certificate
    Objects crls;
    RunStatus expected;
    const Party& issuer = root;
};

struct PkiWorld : World {
    explicit PkiWorld(const Objects& lists)
        : World({root_cert, renewed_cert}, {inter_cert}, lists) {}
};

RunStatus verdict(World& world, const Row& row) {
    try {
        const RunStatus status = world.verify(certify_subject(row.issuer, row.extensions));
        return world.result.revocation_good ? settled : status;
    } catch (const CAException&) {
        return thrown;
    }
}

void expect_rows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        PkiWorld world(row.crls);
        EXPECT_EQ(verdict(world, row), row.expected) << row.what;
    }
}

TEST(Decision, IsGoodOnlyWhenCrlsOfOneStageCoverAllReasons) {
    // ReasonFlags whose first octet is 0x60, 0x1F and 0xFF.
    const Bits some = named_bits({1, 2});
    const Bits rest = named_bits({3, 4, 5, 6, 7});
    const Bits unused_too = named_bits({0, 1, 2, 3, 4, 5, 6, 7});
    const Bytes a = list(root, {}, {idp({.full_name = {url_a}, .only_some_reasons = some})});
    const Bytes b = list(root, {}, {idp({.full_name = {url_b}, .only_some_reasons = rest})});
    const auto point = [](const Bits& reasons) {
        return cdp({{.full_name = {url_a}, .reasons = reasons}});
    };
    const Bytes a_and_b =
        cdp({{.full_name = {url_a}, .reasons = some}, {.full_name = {url_b}, .reasons = rest}});
    const auto partial = [](const Bits& reasons, const Party& issuer = root,
                            const std::vector<CrlEntry>& entries = {}) {
        return list(issuer, entries, {idp({.only_some_reasons = reasons})});
    };
    expect_rows({
        {"no CRL", {point_a}, {}, no_check},
        {"no issuer", {point_a}, {list(other)}, no_check, other},
        {"stage A", {point_a}, {list(root)}, settled},
        {"stage B", {}, {list(root)}, good},
        {"two points", {a_and_b}, {a, b}, settled},
        {"one of two points", {a_and_b}, {a}, no_check},
        {"IDP and point have nothing in common", {point(rest)}, {a}, no_check},
        {"two CRLs of stage A", {point_a}, {a, partial(rest)}, settled},
        {"what stage A covered is forgotten", {point(some)}, {a, partial(rest)}, no_check},
        {"stage B is enough by itself", {point(some)}, {a, list(root)}, good},
        {"the unused bit of a point never completes", {point(unused_too)}, {list(root)}, good},
        {"nor that of an IDP", {point_a}, {partial(unused_too)}, no_check},
        {"what adds nothing is not read",
         {point_a},
         {partial(some), partial(some, root, {revoked(1)}), partial(rest)},
         settled},
        {"what adds something is",
         {point_a},
         {partial(some), partial(rest, root, {revoked(1)})},
         1},
        // The path of the first signer stays and shuts its issuer out of the second search, unless
        // it is an anchor itself.
        {"a CA has one CRL a pass",
         {point_a},
         {partial(some, inter), partial(rest, inter)},
         no_check,
         inter},
        {"another is not even read",
         {point_a},
         {partial(some, inter), partial(rest, inter, {revoked(1)})},
         no_check,
         inter},
        {"one CRL of a CA", {point_a}, {list(inter)}, settled, inter},
    });
}

TEST(Decision, HandsOnTheReasonOfTheFirstEntryWhateverItsDate) {
    const CrlEntry ahead{.serial = subject_serial, .date = utc_time("300101000000Z")};
    const Bytes stranger = certificate_issuer({directory_name(common_name("X"))});
    const CrlEntry of_another{.serial = subject_serial, .extensions = {stranger}};
    expect_rows({
        {"no reason, a date ahead", {point_a}, {list(root, {ahead})}, 0},
        {"a certificate issuer", {}, {list(root, {of_another})}, 0},
        {"hold", {point_a}, {list(root, {revoked(6)}), list(root, {revoked(1)})}, 6},
        {"a reason that nobody knows", {}, {list(root, {revoked(42)})}, 42},
        {"removeFromCRL in stage A", {point_a}, {list(root, {revoked(8)})}, settled},
        {"removeFromCRL in stage B", {}, {list(root, {revoked(8)})}, good},
    });
}

TEST(Decision, TakesACrlOnlyInItsScopeAndWithTheKeyThatItAsksFor) {
    const Bytes two_names = cdp({{.full_name = {url_a, url_b}}});
    const Bytes with_crl_issuer =
        cdp({{.full_name = {url_a}}, {.crl_issuer = {directory_name(common_name("Root"))}}});
    const Bytes no_ca = basic_constraints(Holder::end_entity);
    const auto scoped = [](const IssuingDistributionPoint& point) {
        return list(root, {}, {idp(point)});
    };
    const Bytes named = scoped({.full_name = {url_a}});
    const Bytes ca_only = scoped({.only_ca_certificates = true});
    const Bytes user_only = scoped({.only_user_certificates = true});
    const Bytes version = ca_version(integer(1));
    expect_rows({
        {"the point's name", {point_a}, {named}, settled},
        {"another name", {point_a}, {scoped({.full_name = {url_b}})}, no_check},
        {"names are compared as a whole", {two_names}, {named}, no_check},
        {"no point", {}, {named}, no_check},
        {"CAs only, no constraints", {}, {ca_only}, no_check},
        {"CAs only, no CA", {no_ca}, {ca_only}, no_check},
        {"CAs only", {is_ca}, {ca_only}, good},
        {"users only, a CA", {is_ca}, {user_only}, no_check},
        {"users only", {no_ca}, {user_only}, good},
        {"indirect, which does not matter", {}, {scoped({.indirect = true})}, good},
        {"general names are no name to search for", {with_crl_issuer}, {list(root)}, thrown},

        {"any key of that name", {}, {list(renewed)}, good},
        {"any key, by a kind of neither", {}, {list(renewed, {}, {crl_kind(2)})}, good},
        {"a CA of several keys", {}, {list(renewed, {}, {version})}, no_check},
        {"the same, of neither kind", {}, {list(renewed, {}, {crl_kind(2), version})}, no_check},
        {"the same, any key", {}, {list(renewed, {}, {crl_kind(1), version})}, good},
        {"this key", {}, {list(renewed, {}, {crl_kind(0)})}, no_check},
        {"this key indeed", {}, {list(root, {}, {crl_kind(0), version})}, good},
    });
}

TEST(Decision, LosesAPointOrACrlToAnExceptionInStageAAndAllInStageB) {
    const auto dated = [](const char* from, std::optional<const char*> to) {
        CrlBuilder builder{.this_update = utc_time(from), .next_update = {}};
        if (to)
            builder.next_update = utc_time(*to);
        return list(root, {}, {}, builder);
    };
    const Bytes endless = dated("260101000000Z", {});
    const auto careless = [](const Bytes& name) { // not critical, which throws once
        return list(root, {}, {extension("2.5.29.28", Critical::no, sequence(name))});
    };
    const Bytes at_a = careless(context(0, context(0, url_a)));
    const Bytes twice_a = cdp({{.full_name = {url_a}}, {.full_name = {url_a}}});
    const Bytes no_idp = list(root, {}, {extension("2.5.29.28", Critical::yes, null())});
    const Bytes no_number = list(root, {}, {delta_crl_indicator(null())});
    expect_rows({
        {"at its end", {}, {dated("260101000000Z", "260601120000Z")}, good},
        {"after", {}, {dated("260101000000Z", "260601115959Z")}, no_check},
        {"at its beginning", {}, {dated("260601120000Z", "270101000000Z")}, good},
        {"before", {}, {dated("260601120001Z", "270101000000Z")}, no_check},
        {"without an end, stage A", {point_a}, {endless, list(root)}, settled},
        {"without an end, stage B", {}, {endless, list(root)}, thrown},
        {"a careless IDP in stage B", {}, {careless({})}, thrown},
        {"one point is lost, and stage B heeds it", {point_a}, {careless({})}, good},
        {"one point is lost, and the second pass heeds it", {point_a}, {at_a}, settled},
        {"an IDP that is none", {point_a}, {no_idp}, thrown},
        {"a delta to what is no number", {point_a}, {list(root), no_number}, thrown},
    });
    PkiWorld world({at_a});
    EXPECT_EQ(verdict(world, {"", {twice_a}, {}, {}}), settled) << "the other point heeds it";
    EXPECT_EQ(faked.retrievals.size(), 1U) << "in the first pass";
}

// A delta to base 5, issued in May.
struct Delta {
    std::optional<int> number = 7;
    int base = 5;
    const char* from = "260501000000Z";
    const char* to = "270101000000Z";
    Objects more = {};
    const Party& issuer = root;
    std::vector<CrlEntry> entries = {};

    operator Bytes() const {
        Objects extensions = more;
        extensions.push_back(delta_crl_indicator(integer(base)));
        if (number)
            extensions.push_back(crl_number(integer(*number)));
        return list(issuer, entries, extensions,
                    {.this_update = utc_time(from), .next_update = utc_time(to)});
    }
};

TEST(Delta, AppliesToBasesFromItsIndicatorToBelowItsNumberWhileItIsCurrent) {
    const Bytes nowhere = freshest_crl({{.full_name = {directory_name(common_name("X"))}}});
    const Bytes five = crl_number(integer(5));
    const Bytes by_key = authority_key_identifier(key_id);
    const Bytes by_key_and_serial =
        authority_key_identifier(key_id, {directory_name(common_name("X"))}, hex("01"));
    const Bytes scope = idp({.only_some_reasons = named_bits({1})});
    const struct {
        const char* what;
        Objects base; // extensions
        Objects deltas;
        RunStatus expected;
    } rows[] = {
        {"none", {five}, {}, no_check},
        {"from the base on", {five}, {Delta{}}, good},
        {"from before the base", {five}, {Delta{.base = 4}}, good},
        {"from behind the base", {five}, {Delta{.base = 6}}, no_check},
        {"one beyond the base", {five}, {Delta{.number = 6}}, good},
        {"not beyond the base", {five}, {Delta{.number = 5}}, no_check},
        {"a delta without number", {five}, {Delta{.number = std::nullopt}}, no_check},
        {"a base without number", {}, {Delta{}}, no_check},
        {"a number too long", {crl_number(integer_octets(hex("0100000000")))}, {Delta{}}, no_check},
        {"at its end", {five}, {Delta{.to = "260601120000Z"}}, good},
        {"expired", {five}, {Delta{.to = "260601115959Z"}}, no_check},
        {"at its beginning", {five}, {Delta{.from = "260601120000Z"}}, good},
        {"not yet", {five}, {Delta{.from = "260601120001Z"}}, no_check},
        {"another scope", {five}, {Delta{.more = {scope}}}, no_check},
        {"the same key", {five, by_key}, {Delta{.more = {by_key}}}, good},
        {"another key", {five}, {Delta{.more = {by_key}}}, no_check},
        {"the key in other words", {five, by_key}, {Delta{.more = {by_key_and_serial}}}, no_check},
        {"signed by another", {five}, {Delta{.issuer = renewed}}, no_check},
        {"an older one", {five}, {Delta{.issuer = renewed}, Delta{.from = "260401000000Z"}}, good},
        {"the first of a time counts", {five}, {Delta{.issuer = renewed}, Delta{}}, no_check},
        {"the second of a time does not", {five}, {Delta{}, Delta{.issuer = renewed}}, good},
    };
    for (const auto& row : rows) {
        for (const bool in_certificate : {true, false}) {
            Objects of_base = row.base;
            if (!in_certificate)
                of_base.push_back(nowhere);
            Objects crls = row.deltas; // and a base that has expired long ago
            crls.push_back(list(root, {}, of_base, {.next_update = utc_time("260302000000Z")}));
            PkiWorld world(crls);
            const Objects of_certificate = in_certificate ? Objects{nowhere} : Objects();
            EXPECT_EQ(verdict(world, {"", of_certificate, {}, {}}), row.expected)
                << row.what << in_certificate;
        }
    }
    expect_rows({{"unasked", {}, {list(root, {}, {five}), Delta{.entries = {revoked(1)}}}, good}});

    // What the base's own points bring, short of what is no delta.
    const Bytes base = list(root, {}, {five, freshest_crl({{.full_name = {url_a}}})});
    PkiWorld world({base});
    faked.served = {{"a", {list(root, {revoked(1)}), Delta{.entries = {revoked(8)}}}}};
    EXPECT_EQ(verdict(world, {"", {cdp({{.full_name = {url_b}}})}, {}, {}}), settled);
}

TEST(Delta, HidesTheEntryOfItsBase) {
    const struct {
        std::vector<CrlEntry> base;
        Objects deltas;
        RunStatus expected;
        bool listed;
    } rows[] = {
        {{}, {Delta{}}, settled, false},
        {{revoked(6)}, {Delta{}}, 6, true},
        {{revoked(6)}, {Delta{.entries = {revoked(8)}}}, settled, true},
        {{revoked(6)}, {Delta{.entries = {revoked(1)}}}, 1, true},
        {{},
         {Delta{.from = "260402000000Z", .entries = {revoked(1)}},
          Delta{.from = "260403000000Z", .entries = {revoked(8)}},
          Delta{.from = "260401000000Z", .entries = {revoked(3)}}},
         settled,
         true},
    };
    for (const auto& row : rows) {
        Objects crls = row.deltas;
        crls.push_back(list(root, row.base, {crl_number(integer(5))}));
        PkiWorld world(crls);
        EXPECT_EQ(verdict(world, {"", {point_a, freshest_crl({{.full_name = {url_b}}})}, {}, {}}),
                  row.expected);
        const CertificateCacheInfo& result = world.result;
        ASSERT_EQ(result.crl_pairs.size(), 1U);
        const auto [base, delta] = *result.crl_pairs.begin();
        EXPECT_NE(delta, nullptr);
        EXPECT_EQ(result.deciding_base_crl, row.listed ? base : nullptr);
        EXPECT_EQ(result.deciding_delta_crl, row.listed ? delta : nullptr);
    }
}

TEST(Run, DecidesAgainOverTheWireUnlessCachedCrlsSayGood) {
    const Bytes base = list(inter, {revoked(6)}, {crl_number(integer(5))});
    const Bytes old_delta = Delta{.from = "260401000000Z", .issuer = inter};
    const Bytes new_delta = Delta{.issuer = inter, .entries = {revoked(8)}};
    const Row row{"", {point_a, freshest_crl({{.full_name = {url_b}}})}, {}, {}, inter};
    const struct {
        std::uint32_t flags;
        Bytes cached_delta;
        Answer about_the_ca;
        RunStatus expected;
        std::vector<DWORD> asked; // flags, each time for both URLs
        std::size_t pairs;        // of CRLs consulted
    } rows[] = {
        // The base CRL is kept from the first pass, and the signer's path is not.
        {0, old_delta, {}, settled, {3, 1}, 2},
        {chain_cache_only, old_delta, {}, 6, {3, 3}, 1},
        {0, new_delta, {}, settled, {3}, 1},
        {0, new_delta, {1, 0}, no_check, {3, 1}, 0},
    };
    for (const auto& each : rows) {
        PkiWorld world({});
        world.chain.chain_flags |= each.flags;
        faked.cached = {{"a", {base}}, {"b", {each.cached_delta}}};
        faked.served = {{"b", {new_delta}}};
        faked.answers = {{inter_cert, each.about_the_ca}};
        EXPECT_EQ(verdict(world, row), each.expected);
        std::vector<Retrieval> asked;
        for (const DWORD flags : each.asked)
            for (const char* location : {"a", "b"})
                asked.push_back({location, flags});
        EXPECT_EQ(faked.retrievals, asked);
        EXPECT_EQ(world.result.crl_pairs.size(), each.pairs);
    }
    World without_issuer;
    EXPECT_EQ(without_issuer.verify(certify_subject(inter, row.extensions)), no_check);
    EXPECT_TRUE(faked.retrievals.empty()) << "nothing is gathered";
}

} // namespace
} // namespace norvane::testing
