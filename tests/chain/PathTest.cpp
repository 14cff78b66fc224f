// The search for a path, the records that failed paths leave, and the tests of a whole path.
#include "World.h"
#include "chain/CrlIssuer.h"
#include "chain/PathBuilding.h"
#include "chain/PathValidation.h"
#include "chain/TrustStatus.h"
#include "items/PrivateKeyUsage.h"

namespace norvane::testing {
namespace {

// What a failure leaves.
using Record = std::optional<std::pair<Objects, std::uint32_t>>;
Record record_of(const ChainValidator& chain) {
    return chain.best_path
               ? Record({certificates_of(*chain.best_path), chain.best_path->path_status})
               : Record();
}

const Bytes root_cert = certify(root, root);
const Bytes inter_cert = certify(root, inter);
const Bytes leaf = certify_subject(inter);

TEST(PathBuilding, EndsWhereItMustWithTheRecordOfTheLeastBadBranch) {
    const Bytes expired = certify(root, inter, {is_ca}, {.not_after = utc_time("260601115959Z")});
    const Bytes cross = certify(inter, other);
    const Bytes cross_back = certify(other, inter);
    const Bytes wrong_key = certify(root, {"Inter", Key::ec(9)});
    // A time-out that the platform cannot be given throws where this extension is followed.
    const Bytes throwing = certify(root, inter, {is_ca, authority_info_access({"1"})});
    const struct {
        const char* what;
        Bytes start;
        Objects stored, trusted, path; // no path: the search fails with the record
        Record record = {};
        // clang-format off
    } rows[] = {
        {"untrusted but self-signed: nor are others sought", root_cert, {certify(other, root)},
         {certify(other, other)}, {}, {{{root_cert}, IS_UNTRUSTED_ROOT}}},
        {"trusted but not self-signed: no anchor, and no issuer is sought", leaf, {},
         {inter_cert, root_cert}, {}, {{{inter_cert, leaf}, IS_NOT_SIGNATURE_VALID}}},
        {"the expired is less bad than the forged", leaf, {wrong_key, expired}, {root_cert}, {},
         {{{expired, leaf}, IS_NOT_TIME_VALID}}},
        {"a bad signature", leaf, {wrong_key}, {root_cert}, {},
         {{{wrong_key, leaf}, IS_NOT_SIGNATURE_VALID}}},
        {"round a circle and out of it", leaf, {cross_back, cross, inter_cert}, {root_cert},
         {root_cert, inter_cert, cross, cross_back, leaf}},
        {"an exception leaves no record", leaf, {throwing}, {root_cert}, {},
         {{{leaf}, IS_PARTIAL_CHAIN}}},
        {"an exception costs one candidate", leaf, {throwing, inter_cert}, {root_cert},
         {root_cert, inter_cert, leaf}},
        {"an exception at the start", throwing, {}, {root_cert}, {}},
    };
    // clang-format on
    for (const auto& row : rows) {
        World world(row.trusted, row.stored);
        world.chain.chain_flags = 0; // and no revocation, whose time-out would throw, too
        world.chain.retrieval_timeout = from_milliseconds(0xFFFFFFFF);
        EXPECT_EQ(push_and_extend(world.chain, world.enter(row.start)), !row.path.empty())
            << row.what;
        EXPECT_EQ(certificates_of(world.chain.path), row.path) << row.what;
        EXPECT_EQ(record_of(world.chain), row.record) << row.what;
    }
}

// Paths whose links are right unless a row has it otherwise.
TEST(PathValidation, TestsEachCertificateInOrderAndSpendsTheBudgetFromTheRoot) {
    using Extensions = std::vector<Objects>;
    const auto party = [](std::size_t number) { return Party{std::to_string(number), root.key}; };
    const auto path_of = [&](const Extensions& extensions) {
        Objects path;
        for (std::size_t i = 0; i < extensions.size(); ++i)
            path.push_back(certify(party(i == 0 ? 0 : i - 1), party(i), extensions[i]));
        return path;
    };
    const auto limit = [](int length) { return Objects{basic_constraints(Holder::ca, length)}; };
    const Objects for_crls{is_ca, key_usage(named_bits({crl_sign}))};
    const Objects none;
    const Objects ca{is_ca};
    const Bytes ended = utc_time("260601115959Z");
    const Bytes limited_root = certify(party(0), party(0), limit(0));
    const Bytes self_issued = certify(party(0), party(0), ca, {.serial = hex("09")});
    const struct {
        const char* what;
        Objects path;
        std::uint32_t status = 0; // 0: the path holds
        // clang-format off
    } rows[] = {
        {"an anchor alone is tested as no CA", path_of({none})},
        {"a root without constraints", path_of({none, none}), INVALID_BASIC_CONSTRAINTS},
        {"1 at the root", path_of({limit(1), ca, none})},
        {"a greater one below does not widen", path_of({limit(1), limit(9), ca, none}),
         INVALID_BASIC_CONSTRAINTS},
        {"self-issued CAs spend", {limited_root, self_issued, certify(party(0), party(1), none)},
         INVALID_BASIC_CONSTRAINTS},
        {"constraints of the last are not read", path_of({limit(0), ca})},
        {"no keyCertSign", path_of({ca, for_crls, none}), IS_NOT_VALID_FOR_USAGE},
        {"an expired root", {certify(party(0), party(0), ca, {.not_after = ended}),
                             certify(party(0), party(1))}, IS_NOT_TIME_VALID},
        {"a broken link", {certify(party(0), party(0)), certify(party(0), party(1)),
                           certify(party(9), party(2))}, IS_PARTIAL_CHAIN},
    };
    // clang-format on
    for (const auto& row : rows) {
        World world;
        ChainValidator& chain = world.chain;
        for (const Bytes& encoded : row.path)
            chain.path.items.emplace_back(world.enter(encoded));
        chain.path.items.front().info().trusted = true;
        chain.path.path_status = IS_REVOKED;
        EXPECT_EQ(validate_path(chain), row.status == 0) << row.what;
        EXPECT_EQ(chain.path.path_status, 0U) << row.what;
        Record expected;
        if (row.status != 0) // what stands before a broken link is cut off
            expected = {row.status == IS_PARTIAL_CHAIN ? Objects{row.path.back()} : row.path,
                        row.status};
        EXPECT_EQ(record_of(chain), expected) << row.what;
    }
}

TEST(CrlIssuer, ThatIsNotFoundLeavesTheLeastBadPathForTheNextSearchToStartFrom) {
    const Bytes no_path = certify(other, inter, {});
    const Bytes expired = certify(root, inter, {}, {.not_after = utc_time("260601115959Z")});
    World world({root_cert}, {no_path, expired});
    Objects left{expired};
    for (const Party& issuer : {inter, root}) {
        CRLChainItem crl(world.enter_crl(list(issuer)));
        EXPECT_FALSE(find_crl_issuer(world.chain, crl));
        left.insert(left.begin(), root_cert);
        EXPECT_EQ(certificates_of(world.chain.path), left);
        EXPECT_EQ(world.chain.path.path_status, IS_NOT_TIME_VALID);
        EXPECT_FALSE(world.chain.best_path);
    }
}

TEST(CrlIssuer, SignsAfterTheEndOfItsKeyUnlessUsageOfKeysIsStrict) {
    for (const StrictPkup strict : {StrictPkup::on, StrictPkup::off}) {
        strict_pkup_state = strict;
        World world({root_cert}, {certify(root, inter, {key_until_2025})});
        CRLChainItem crl(world.enter_crl(list(inter)));
        EXPECT_EQ(find_crl_issuer(world.chain, crl), strict == StrictPkup::off);
    }
}

} // namespace
} // namespace norvane::testing
