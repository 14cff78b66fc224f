// The search for a path, the records that failed paths leave, and the tests of a whole path.
#include "World.h"
#include "chain/CrlIssuer.h"
#include "chain/PathBuilding.h"
#include "chain/PathFailure.h"
#include "chain/PathValidation.h"
#include "items/PrivateKeyUsage.h"

namespace norvane::testing {
namespace {

// What a failure leaves: the certificates of a path, the status of the whole, and the place of the
// one element that is marked with it.
struct Record {
    Objects certificates;
    std::uint32_t status = 0;
    std::optional<std::size_t> marked = {};

    bool operator==(const Record&) const = default;
};
std::optional<Record> record_of(const ChainValidator& chain) {
    if (!chain.best_path)
        return {};
    Record record{certificates_of(*chain.best_path), chain.best_path->path_status};
    std::size_t place = 0;
    for (const CertificateChainItem& element : chain.best_path->items) {
        if (element.status != 0) {
            EXPECT_EQ(element.status, record.status);
            EXPECT_FALSE(record.marked);
            record.marked = place;
        }
        ++place;
    }
    return record;
}

const Bytes root_cert = certify(root, root);
const Bytes inter_cert = certify(root, inter);
const Bytes leaf = certify_subject(inter);

TEST(PathFailure, IsLessBadByTheWorstBitThatDiffers) {
    const std::uint32_t worst_first[] = {0x10000, 0x8, 0x20, 0x1, 0x4, 0x40, 0x10, 0x400};
    for (const std::uint32_t& worse : worst_first) {
        EXPECT_EQ(compare_status(worse, 0), 1);
        for (const std::uint32_t* better = &worse + 1; better != std::end(worst_first); ++better) {
            EXPECT_EQ(compare_status(worse, *better), -1) << worse << ' ' << *better;
            EXPECT_EQ(compare_status(*better | 0x400, worse), 1) << worse << ' ' << *better;
        }
    }
    EXPECT_EQ(compare_status(0, 0), 0);
}

TEST(PathBuilding, EndsWhereItMustWithTheRecordOfTheLeastBadBranch) {
    const Bytes expired = certify(root, inter, {is_ca}, {.not_after = utc_time("260601115959Z")});
    const Bytes cross = certify(inter, other);
    const Bytes cross_back = certify(other, inter);
    const Bytes wrong_key = certify(root, {"Inter", Key::ec(9)});
    const Bytes forged = certify({"Root", Key::ec(9)}, inter);
    // A time-out that the platform cannot be given throws where this extension is followed.
    const Bytes throwing = certify(root, inter, {is_ca, authority_info_access({"1"})});
    const struct {
        const char* what;
        Bytes start;
        Objects stored, trusted, path; // no path: the search fails with the record
        std::optional<Record> record = {};
        std::uint32_t flags = 0;
        // clang-format off
    } rows[] = {
        {"no search from an anchor", root_cert, {}, {root_cert}, {root_cert}},
        {"up to the anchor", leaf, {inter_cert}, {root_cert}, {root_cert, inter_cert, leaf}},
        {"untrusted but self-signed: nor are others sought", root_cert, {certify(other, root)},
         {certify(other, other)}, {}, Record{{root_cert}, IS_UNTRUSTED_ROOT, 0}},
        {"trusted but not self-signed: no anchor, and no issuer is sought", leaf, {},
         {inter_cert, root_cert}, {}, Record{{inter_cert, leaf}, IS_NOT_SIGNATURE_VALID, 0}},
        {"no issuer", leaf, {}, {root_cert}, {}, Record{{leaf}, IS_PARTIAL_CHAIN}},
        {"an expired candidate", leaf, {expired}, {root_cert}, {},
         Record{{expired, leaf}, IS_NOT_TIME_VALID, 0}},
        {"a bad signature of the child marks the candidate", leaf, {wrong_key}, {root_cert}, {},
         Record{{wrong_key, leaf}, IS_NOT_SIGNATURE_VALID, 0}},
        {"and the child if links are tested at the end", leaf, {forged}, {root_cert}, {},
         Record{{root_cert, forged, leaf}, IS_NOT_SIGNATURE_VALID, 1}, ChainFlagDeferSignatureCheck},
        {"a circle", leaf, {cross, cross_back}, {}, {},
         Record{{cross, cross_back, leaf}, IS_PARTIAL_CHAIN}},
        {"round a circle and out of it", leaf, {cross_back, cross, inter_cert}, {root_cert},
         {root_cert, inter_cert, cross, cross_back, leaf}},
        {"an exception leaves no record", leaf, {throwing}, {root_cert}, {},
         Record{{leaf}, IS_PARTIAL_CHAIN}},
        {"an exception costs one candidate", leaf, {throwing, inter_cert}, {root_cert},
         {root_cert, inter_cert, leaf}},
        {"an exception at the start", throwing, {}, {root_cert}, {}},
    };
    // clang-format on
    for (const auto& row : rows) {
        World world(row.trusted, row.stored);
        world.chain.chain_flags = row.flags; // and no revocation, whose time-out would throw, too
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
    const auto for_a_moment = [&](const char* from, const char* to) {
        return Objects{certify(party(0), party(0), {is_ca},
                               {.not_before = utc_time(from), .not_after = utc_time(to)}),
                       certify(party(0), party(1), {})};
    };
    const auto limit = [](int length) { return Objects{basic_constraints(Holder::ca, length)}; };
    const auto usage = [](unsigned bit) { return Objects{is_ca, key_usage(named_bits({bit}))}; };
    const Objects none;
    const Objects ca{is_ca};
    const Objects no_ca{basic_constraints(Holder::end_entity)};
    const Bytes limited_root = certify(party(0), party(0), limit(0));
    const Bytes self_issued = certify(party(0), party(0), ca, {.serial = hex("09")});
    const struct {
        const char* what;
        Objects path;
        std::uint32_t status = 0; // 0: the path holds
        std::size_t marked = 0;
        // clang-format off
    } rows[] = {
        {"an anchor alone is tested as no CA", path_of({none})},
        {"a root without constraints", path_of({none, none}), INVALID_BASIC_CONSTRAINTS, 0},
        {"a CA that is none", path_of({ca, no_ca, none}), INVALID_BASIC_CONSTRAINTS, 1},
        {"no limit", path_of({ca, ca, ca, ca, ca, none})},
        {"0 at the root", path_of({limit(0), none})},
        {"0 at the root and a CA", path_of({limit(0), ca, none}), INVALID_BASIC_CONSTRAINTS, 1},
        {"1 at the root", path_of({limit(1), ca, none})},
        {"a greater one below does not widen", path_of({limit(1), limit(9), ca, none}),
         INVALID_BASIC_CONSTRAINTS, 2},
        {"0 below", path_of({ca, limit(0), ca, none}), INVALID_BASIC_CONSTRAINTS, 2},
        {"self-issued CAs spend", {limited_root, self_issued, certify(party(0), party(1), none)},
         INVALID_BASIC_CONSTRAINTS, 1},
        {"constraints of the last are not read", path_of({limit(0), ca})},
        {"no keyCertSign", path_of({ca, usage(crl_sign), none}), IS_NOT_VALID_FOR_USAGE, 1},
        {"keyCertSign", path_of({usage(key_cert_sign), usage(crl_sign)})},
        {"an expired root", for_a_moment("250101000000Z", "260601115959Z"), IS_NOT_TIME_VALID, 0},
        {"one moment", for_a_moment("260601120000Z", "260601120000Z")},
        {"a broken link", {certify(party(0), party(0)), certify(party(0), party(1)),
                           certify(party(9), party(2))}, IS_PARTIAL_CHAIN},
    };
    // clang-format on
    for (const auto& row : rows) {
        World world;
        ChainValidator& chain = world.chain;
        for (const Bytes& encoded : row.path)
            chain.path.items.emplace_back(world.enter(encoded)).status = IS_REVOKED;
        chain.path.items.front().info().trusted = true;
        chain.path.path_status = IS_REVOKED;
        EXPECT_EQ(validate_path(chain), row.status == 0) << row.what;
        EXPECT_EQ(chain.path.path_status, 0U) << row.what;
        std::optional<Record> expected;
        if (row.status == IS_PARTIAL_CHAIN) { // what stands before the broken link is cut off
            expected = Record{{row.path.back()}, IS_PARTIAL_CHAIN};
        } else if (row.status != 0) {
            expected = Record{row.path, row.status, row.marked};
        }
        EXPECT_EQ(record_of(chain), expected) << row.what;
    }
}

TEST(CrlIssuer, IsTheBestCandidateThatMaySignCrlsDidAndHasAPath) {
    const auto signer = [](const Objects& extensions) { return certify(root, inter, extensions); };
    const Bytes no_crls = signer({key_usage(named_bits({key_cert_sign}))});
    const Bytes no_usage = signer({});
    const Bytes for_crls = signer({key_usage(named_bits({crl_sign}))});
    const Bytes other_key = certify(root, {"Inter", Key::ec(9)}, {});
    const Bytes no_path = certify(other, inter, {});
    const Bytes expired = certify(root, inter, {}, {.not_after = utc_time("260601115959Z")});
    const Bytes with_ended_key = signer({key_until("2025")});
    const struct {
        Objects candidates, path; // no path: none of them is
        StrictPkup strict = StrictPkup::off;
    } rows[] = {
        {{no_crls}, {}},
        {{no_crls, no_usage}, {root_cert, no_usage}},
        {{no_crls, for_crls, no_usage}, {root_cert, for_crls}},
        {{other_key, no_path, for_crls}, {root_cert, for_crls}},
        {{with_ended_key, for_crls}, {root_cert, with_ended_key}},
        {{with_ended_key, for_crls}, {root_cert, for_crls}, StrictPkup::on},
    };
    for (const auto& row : rows) {
        strict_pkup_state = row.strict;
        World world({root_cert}, row.candidates);
        CRLChainItem crl(world.enter_crl(list(inter)));
        EXPECT_EQ(find_crl_issuer(world.chain, crl), !row.path.empty()) << &row - rows;
        EXPECT_EQ(certificates_of(world.chain.path), row.path) << &row - rows;
    }
    strict_pkup_state = StrictPkup::off;

    // A failure leaves the least bad path, and the next search starts in front of it.
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

} // namespace
} // namespace norvane::testing
