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
        {"two points", {a_and_b}, {a, b}, settled},
        {"IDP and point have nothing in common", {point(rest)}, {a}, no_check},
        {"what stage A covered is forgotten", {point(some)}, {a, partial(rest)}, no_check},
        {"stage B is enough by itself", {point(some)}, {a, list(root)}, good},
        {"the unused bit of a point never completes", {point(unused_too)}, {list(root)}, good},
        {"nor that of an IDP", {point_a}, {partial(unused_too)}, no_check},
        {"what adds nothing is not read",
         {point_a},
         {partial(some), partial(some, root, {revoked(1)}), partial(rest)},
         settled},
        // The path of the first signer stays and shuts its issuer out of the second search, unless
        // it is an anchor itself.
        {"a CA has one CRL a pass",
         {point_a},
         {partial(some, inter), partial(rest, inter)},
         no_check,
         inter},
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
    const Bytes named = list(root, {}, {idp({.full_name = {url_a}})});
    const Bytes version = ca_version(integer(1));
    expect_rows({
        {"names are compared as a whole", {two_names}, {named}, no_check},
        {"no point", {}, {named}, no_check},
        {"any key of that name", {}, {list(renewed)}, good},
        {"a CA of several keys", {}, {list(renewed, {}, {version})}, no_check},
        {"the same, of neither kind", {}, {list(renewed, {}, {crl_kind(2), version})}, no_check},
        {"the same, any key", {}, {list(renewed, {}, {crl_kind(1), version})}, good},
        {"this key", {}, {list(renewed, {}, {crl_kind(0)})}, no_check},
        {"this key indeed", {}, {list(root, {}, {crl_kind(0), version})}, good},
    });
}

TEST(Decision, LosesAPointOrACrlToAnExceptionInStageAAndAllInStageB) {
    const Bytes now = utc_time("260601120000Z");
    const Bytes for_a_moment = list(root, {}, {}, {.this_update = now, .next_update = now});
    const Bytes endless = list(root, {}, {}, {.next_update = {}});
    const auto careless = [](const Bytes& name) { // not critical, which throws once
        return list(root, {}, {extension("2.5.29.28", Critical::no, sequence(name))});
    };
    const Bytes at_a = careless(context(0, context(0, url_a)));
    const Bytes twice_a = cdp({{.full_name = {url_a}}, {.full_name = {url_a}}});
    const Bytes no_idp = list(root, {}, {extension("2.5.29.28", Critical::yes, null())});
    const Bytes no_number = list(root, {}, {delta_crl_indicator(null())});
    expect_rows({
        {"current for a moment", {}, {for_a_moment}, good},
        {"without an end, stage A", {point_a}, {endless, list(root)}, settled},
        {"without an end, stage B", {}, {endless, list(root)}, thrown},
        {"one point is lost, and stage B heeds it", {point_a}, {careless({})}, good},
        {"one point is lost, and the second pass heeds it", {point_a}, {at_a}, settled},
        {"an IDP that is none", {point_a}, {no_idp}, thrown},
        {"a delta to what is no number", {point_a}, {list(root), no_number}, thrown},
    });
    PkiWorld world({at_a});
    EXPECT_EQ(verdict(world, {"", {twice_a}, {}, {}}), settled) << "the other point heeds it";
    EXPECT_EQ(faked.retrievals.size(), 1U) << "in the first pass";
    EXPECT_EQ(world.result.deciding_base_crl, nullptr) << "which lists nothing";
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
    const Objects fresh{nowhere};
    const auto expired_base = [](const Objects& extensions) {
        return list(root, {}, extensions, {.next_update = utc_time("260302000000Z")});
    };
    const Bytes number = crl_number(integer(5));
    const Bytes five = expired_base({number});
    const Bytes unnumbered = expired_base({});
    const Bytes too_long = expired_base({crl_number(integer_octets(hex("0100000000")))});
    const Bytes by_key = authority_key_identifier(key_id);
    const Bytes by_key_and_serial =
        authority_key_identifier(key_id, {directory_name(common_name("X"))}, hex("01"));
    const Bytes five_by_key = expired_base({number, by_key});
    const Bytes scope = idp({.only_some_reasons = named_bits({1})});
    constexpr const char* noon = "260601120000Z";
    const Delta of_another{.issuer = renewed};
    expect_rows({
        {"from behind the base", fresh, {five, Delta{.base = 6}}, no_check},
        {"one beyond the base", fresh, {five, Delta{.number = 6}}, good},
        {"not beyond the base", fresh, {five, Delta{.number = 5}}, no_check},
        {"a delta without number", fresh, {five, Delta{.number = std::nullopt}}, no_check},
        {"a base without number", fresh, {unnumbered, Delta{}}, no_check},
        {"a number too long", fresh, {too_long, Delta{}}, no_check},
        {"for a moment", fresh, {five, Delta{.from = noon, .to = noon}}, good},
        {"expired", fresh, {five, Delta{.to = "260601115959Z"}}, no_check},
        {"not yet", fresh, {five, Delta{.from = "260601120001Z"}}, no_check},
        {"another scope", fresh, {five, Delta{.more = {scope}}}, no_check},
        {"the same key", fresh, {five_by_key, Delta{.more = {by_key}}}, good},
        {"another key", fresh, {five, Delta{.more = {by_key}}}, no_check},
        {"in other words", fresh, {five_by_key, Delta{.more = {by_key_and_serial}}}, no_check},
        {"an older one", fresh, {five, of_another, Delta{.from = "260401000000Z"}}, good},
        {"the first of a time", fresh, {five, of_another, Delta{}}, no_check},
        {"the latest",
         fresh,
         {five, Delta{.from = "260401000000Z", .entries = {revoked(1)}},
          Delta{.entries = {revoked(8)}}, Delta{.from = "260402000000Z", .entries = {revoked(3)}}},
         good},
        {"none is asked for", {}, {list(root, {}, {number}), Delta{.entries = {revoked(1)}}}, good},
    });

    // What the base's own points bring, short of what is no delta.
    const Bytes base = list(root, {}, {number, freshest_crl({{.full_name = {url_a}}})});
    PkiWorld world({base});
    faked.served = {{"a", {list(root, {revoked(1)}), Delta{.entries = {revoked(8)}}}}};
    EXPECT_EQ(verdict(world, {"", {cdp({{.full_name = {url_b}}})}, {}, {}}), settled);
    ASSERT_EQ(world.result.crl_pairs.size(), 1U);
    const auto [listing, removing] = *world.result.crl_pairs.begin();
    EXPECT_NE(removing, nullptr);
    EXPECT_EQ(world.result.deciding_base_crl, listing);
    EXPECT_EQ(world.result.deciding_delta_crl, removing);

    // Points of base CRLs may bring deltas, and the other way round. Other names are passed over.
    PkiWorld swapped({});
    faked.served = {{"a", {Delta{.entries = {revoked(1)}}}}, {"b", {five}}};
    const Bytes points = cdp({{.full_name = {directory_name(common_name("X")), url_a}}});
    EXPECT_EQ(verdict(swapped, {"", {points, freshest_crl({{.full_name = {url_b}}})}, {}, {}}), 1U);
}

TEST(Run, VerifiesTheCrlThatRevokesOnceInItsTwoPasses) {
    const Bytes crl = list(root, {revoked(1)}, {crl_kind(0)}); // whose key is asked for before, too
    World world({root_cert}, {}, {crl});
    EXPECT_EQ(verdict(world, {"", {point_a}, {}, {}}), 1U);
    EXPECT_EQ(faked.retrievals.size(), 2U) << "one in each pass";
    EXPECT_EQ(std::ranges::count_if(faked.signatures,
                                    [&](const Bytes& reversed) {
                                        return std::equal(reversed.begin(), reversed.end(),
                                                          crl.rbegin());
                                    }),
              1);
}

} // namespace
} // namespace norvane::testing
