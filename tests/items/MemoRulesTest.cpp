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

template <class Item>
struct Row {
    const char* name;
    std::string (*read)(const Item&);
    std::string present;
    std::string absent;
    std::string malformed;
    std::string after_failure;
};

/// What it gives, or the class of the exception.
template <class Item>
std::string result(const Row<Item>& row, const Item& item) {
    std::string value;
    const Error error = error_of([&] { return value = row.read(item); });
    return error.type.empty() ? value : error.type;
}

const std::string refused = "CAValidateException";
const std::string issuer = shown(blob(common_name("Issuer")));

#define ACCESSOR(name) #name, [](const auto& item) { return shown(item.name()); }

const std::vector<Row<CertificateItem>> certificate_rows{
    // clang-format off
    //                                   present  absent   malformed  after a failure
    {ACCESSOR(issuer_name),              issuer,  issuer,  issuer,    throws},
    {ACCESSOR(is_self_signed),           "0",     "0",     "0",       throws},
    {ACCESSOR(crl_distribution_points),  "set",   "null",  "null",    "null"},
    {ACCESSOR(basic_constraints_critical), "1",   "0",     "1",       throws},
    {ACCESSOR(key_usage),                "set",   "null",  "null",    throws},
    {ACCESSOR(authority_key_identifier), "set",   "null",  "null",    "null"},
    {ACCESSOR(subject_key_identifier),   "\x01\x02", "",  "",        throws},
    {ACCESSOR(authority_key_id),         "\xab\x02", "",  "",        ""},
    // clang-format on
};

const std::string point_name = shown(blob(context(0, url("http://a/1"))));

const std::vector<Row<CRLItem>> crl_rows{
    // clang-format off
    //                                   present  absent   malformed  after a failure
    {ACCESSOR(issuer_name),              issuer,  issuer,  issuer,    throws},
    {ACCESSOR(issuing_distribution_point), "set", "null",  refused,   "null"},
    {ACCESSOR(idp_distribution_point_name), point_name, "", refused,  ""},
    {ACCESSOR(authority_key_identifier), "set",   "null",  "null",    "null"},
    {ACCESSOR(ca_version),               "set",   "null",  "set",     throws},
    {ACCESSOR(crl_number),               "7",     "null",  refused,   "null"},
    {ACCESSOR(crl_kind),                 "1",     "-1",    "-1",      "-1"},
    {ACCESSOR(authority_key_id),         "\xab\x02", "",  "",        ""},
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

std::vector<Bytes> malformed(const std::vector<const char*>& types) {
    std::vector<Bytes> extensions;
    for (const char* type : types)
        extensions.push_back(extension(type, Critical::yes, null()));
    return extensions;
}
const std::vector<Bytes> malformed_in_certificate =
    malformed({"2.5.29.31", "2.5.29.19", "2.5.29.15", "2.5.29.35", "2.5.29.14"});
const std::vector<Bytes> malformed_in_crl =
    malformed({"2.5.29.28", "2.5.29.35", "1.3.6.1.4.1.311.21.1", "2.5.29.20", "1.2.643.2.2.49.1"});

/// Reads each accessor twice on an item of its own.
template <class Item>
void expect_rows(const std::vector<Row<Item>>& rows, std::string Row<Item>::*wanted,
                 const Item& like) {
    for (const Row<Item>& row : rows) {
        const Item item(CACMPT_BLOB(like.encoded()));
        EXPECT_EQ(result(row, item), row.*wanted) << row.name;
        EXPECT_EQ(result(row, item), row.*wanted) << row.name << " at the second read";
    }
}

template <class Item>
void expect_values(const std::vector<Row<Item>>& rows, const std::vector<Bytes>& extensions,
                   const std::vector<Bytes>& malformed, Item (*make)(const std::vector<Bytes>&)) {
    expect_rows(rows, &Row<Item>::present, make(extensions));
    expect_rows(rows, &Row<Item>::absent, make({}));
    expect_rows(rows, &Row<Item>::malformed, make(malformed));
    // Of two with one identifier the first counts, also where it is of no use.
    std::vector<Bytes> both = malformed;
    both.insert(both.end(), extensions.begin(), extensions.end());
    expect_rows(rows, &Row<Item>::malformed, make(both));
    for (const Bytes& garbage : {Bytes{}, hex("3003020105")}) {
        const Item item(blob(garbage));
        for (const Row<Item>& row : rows) {
            const Item unread(item);
            EXPECT_EQ(result(row, unread), throws) << row.name;
            EXPECT_EQ(result(row, unread), row.after_failure) << row.name;
        }
        EXPECT_EQ(error_of([&] { return item.decoded(); }).module, "ChainBase");
        EXPECT_FALSE(item.is_decoded());
    }
}

TEST(MemoRules, HoldForEveryAccessor) {
    expect_values(certificate_rows, certificate_extensions, malformed_in_certificate, &certificate);
    expect_values(crl_rows, crl_extensions, malformed_in_crl, &crl);
    const Error no_source{"CAException", "No source for fill_encoded", "ChainBase"};
    EXPECT_EQ(error_of([] { return CertificateItem().encoded().length; }), no_source);
}

} // namespace
} // namespace norvane
