// One row for each rule and kind of value that an accessor has: what it gives for the extension,
// without it, for content that is not what its type says, and at a second read when the first one
// could not decode the item.
#include "Material.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "values/ErrorOf.h"

namespace norvane {
namespace {

using namespace testing;

std::string shown(const CACMPT_BLOB& blob) { return {blob.data, blob.data + blob.length}; }
std::string shown(const CACMPT_CERT_NAME& name) { return shown(name.encoded); }
std::string shown(std::int64_t number) { return std::to_string(number); }
std::string shown(std::optional<std::uint32_t> number) {
    return number ? std::to_string(*number) : "null";
}
template <class Value>
std::string shown(const Value* value) {
    return value == nullptr ? "null" : "set";
}

const std::string throws = "Asn1Exception";
enum class InCopy { kept, decoded_anew };
using enum InCopy;

template <class Item>
struct Row {
    const char* name;
    std::string (*read)(const Item&);
    std::string present;
    std::string absent;
    std::string malformed;
    std::string after_failure;
    InCopy in_copy = decoded_anew;
    std::string failure = throws;

    /// What it gives, or the class of the exception.
    [[nodiscard]] std::string result(const Item& item) const {
        std::string value;
        const Error error = error_of([&] { return value = read(item); });
        return error.type.empty() ? value : error.type;
    }
};

const std::string refused = "CAValidateException";
const std::string issuer = shown(blob(common_name("Issuer")));

#define ACCESSOR(name) #name, [](const auto& item) { return shown(item.name()); }

const std::vector<Row<CertificateItem>> certificate_rows{
    // clang-format off
    //                                   present  absent   malformed  after a failure
    {ACCESSOR(issuer_name),              issuer,  issuer,  issuer,    throws, kept},
    {ACCESSOR(is_self_signed),           "0",     "0",     "0",       throws, kept},
    {ACCESSOR(crl_distribution_points),  "set",   "null",  "null",    "null"},
    {ACCESSOR(basic_constraints_critical), "1",   "0",     "1",       throws},
    {ACCESSOR(key_usage),                "set",   "null",  "null",    throws},
    {ACCESSOR(authority_key_identifier), "set",   "null",  "null",    "null"},
    {ACCESSOR(subject_key_identifier),   "\x01\x02", "",  "",        throws, kept},
    {ACCESSOR(authority_key_id),         "\xab\x02", "",  "",        "",     kept},
    // clang-format on
};

const std::string point_name = shown(blob(context(0, url("http://a/1"))));

const std::vector<Row<CRLItem>> crl_rows{
    // clang-format off
    //                                   present  absent   malformed  after a failure
    {ACCESSOR(issuer_name),              issuer,  issuer,  issuer,    throws, kept},
    {ACCESSOR(issuing_distribution_point), "set", "null",  refused,   "null"},
    {ACCESSOR(idp_distribution_point_name), point_name, "", refused,  ""},
    {ACCESSOR(authority_key_identifier), "set",   "null",  "null",    "null"},
    {ACCESSOR(ca_version),               "set",   "null",  "set",     throws},
    {ACCESSOR(crl_number),               "7",     "null",  refused,   "null"},
    {ACCESSOR(crl_kind),                 "1",     "-1",    "-1",      "-1"},
    {ACCESSOR(authority_key_id),         "\xab\x02", "",  "",        "",     kept},
    // clang-format on
};

#undef ACCESSOR

const std::vector<DistributionPoint> points{{.full_name = {url("http://a/1")}}};

const std::vector<Bytes> certificate_extensions{
    crl_distribution_points(points), basic_constraints(Holder::ca),
    key_usage(named_bits({crl_sign})), authority_key_identifier(Bytes{0xab, 2}),
    subject_key_identifier({1, 2})};

const std::vector<Bytes> crl_extensions{
    issuing_distribution_point(
        {.full_name = {url("http://a/1")}, .only_some_reasons = named_bits({2})}),
    authority_key_identifier(Bytes{0xab, 2}), ca_version(integer(2)), crl_number(integer(7)),
    crl_kind(1)};

/// The same extensions, critical and with another content if one is given.
std::vector<Bytes> critical(const std::vector<Bytes>& extensions,
                            const std::optional<Bytes>& content = {}) {
    std::vector<Bytes> changed;
    for (const Bytes& extension : extensions) {
        const auto* const type = extension.data() + 2;
        const auto* const flag = type + 2 + type[1];
        const auto* const value = *flag == 0x01 ? flag + 3 : flag;
        changed.push_back(sequence(Bytes(type, flag), boolean(true),
                                   content ? octet_string(*content)
                                           : Bytes(value, extension.data() + extension.size())));
    }
    return changed;
}

/// Reads each accessor twice on an item of its own.
template <class Item>
void expect_rows(const std::vector<Row<Item>>& rows, std::string Row<Item>::*first,
                 std::string Row<Item>::*second, const Item& like) {
    for (const Row<Item>& row : rows) {
        const Item item(CACMPT_BLOB(like.encoded()));
        EXPECT_EQ(row.result(item), row.*first) << row.name;
        EXPECT_EQ(row.result(item), row.*second) << row.name << " at the second read";
    }
}

template <class Item>
void expect_values(const std::vector<Row<Item>>& rows, const std::vector<Bytes>& extensions,
                   Item (*make)(const std::vector<Bytes>&)) {
    using R = Row<Item>;
    const std::vector<Bytes> malformed = critical(extensions, null());
    expect_rows(rows, &R::present, &R::present, make(extensions));
    expect_rows(rows, &R::present, &R::present, make(critical(extensions)));
    expect_rows(rows, &R::absent, &R::absent, make({}));
    expect_rows(rows, &R::malformed, &R::malformed, make(malformed));
    // Of two with one identifier the first counts, also where it is of no use.
    std::vector<Bytes> both = malformed;
    both.insert(both.end(), extensions.begin(), extensions.end());
    expect_rows(rows, &R::malformed, &R::malformed, make(both));
    for (const Bytes& garbage : {Bytes{}, hex("3003020105")}) {
        const Item item(blob(garbage));
        expect_rows(rows, &R::failure, &R::after_failure, item);
        EXPECT_EQ(error_of([&] { return item.decoded(); }).module, "ChainBase");
        EXPECT_FALSE(item.is_decoded());
    }
}

template <class Item>
void expect_copies(const std::vector<Row<Item>>& rows, Item item, Item other) {
    for (const Row<Item>& row : rows) {
        static_cast<void>(row.result(item));
        static_cast<void>(row.result(other));
    }
    for (const Row<Item>& row : rows) {
        const Item copy(item);
        const unsigned asked = verification_count();
        EXPECT_EQ(row.result(copy), row.present) << row.name;
        EXPECT_EQ(copy.is_decoded(), row.in_copy == decoded_anew) << row.name;
        EXPECT_EQ(verification_count(), asked) << row.name;
    }
    item.copy_from(item);
    other = item; // Nothing of what it was stays behind.
    const auto* const decoded = item.decoded();
    const Item moved(std::move(item));
    EXPECT_EQ(moved.decoded(), decoded);
    for (const Row<Item>& row : rows) {
        EXPECT_EQ(row.result(moved), row.present) << row.name << " when moved";
        EXPECT_EQ(row.result(other), row.present) << row.name << " when assigned";
    }
    other.clear();
    EXPECT_EQ(other.decoded(), nullptr);
    const Error no_source{"CAException", "No source for fill_encoded", "ChainBase"};
    EXPECT_EQ(error_of([&] { return other.encoded().length; }), no_source);
}

TEST(MemoRules, HoldForEveryAccessor) {
    expect_values(certificate_rows, certificate_extensions, &certificate);
    expect_values(crl_rows, crl_extensions, &crl);
}

TEST(MemoRules, CopiesKeepNamesAndKeyIdentifiersAndDecodeTheRestAnew) {
    expect_copies(certificate_rows, certificate(certificate_extensions), certificate({}));
    expect_copies(crl_rows, crl(crl_extensions), crl(std::vector<Bytes>{}));
}

} // namespace
} // namespace norvane
