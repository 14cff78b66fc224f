#include "values/GeneralName.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "values/ASN1TypesImpl.h"
#include "values/ErrorOf.h"

namespace norvane {
namespace {

const Error pointer_is_null{"CAException", "pointer is null", "ASN1TypesImpl"};

template <class T>
CACMPT_GeneralName name_of(std::uint32_t tag, const T& value) {
    CACMPT_GeneralName name;
    name.set(tag, &value);
    return name;
}

template <class T>
const T& value_of(const CACMPT_GeneralName& name) {
    return *static_cast<const T*>(name.value());
}

constexpr std::array<std::uint8_t, 3> some_bytes{0x30, 0x01, 0x00};
// Long enough to be allocated, so that a value of the wrong type does not go unseen.
const std::string long_text = "http://crl.example.org/path/to/a/list/of/revoked/certificates.crl";

template <class T>
void expect_deep_copies(std::initializer_list<std::uint32_t> tags, const T& value) {
    for (const std::uint32_t tag : tags) {
        const CACMPT_GeneralName name = name_of(tag, value);
        const CACMPT_GeneralName copy = name; // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_EQ(value_of<T>(copy), value) << tag;
        EXPECT_NE(copy.value(), name.value()) << tag;
    }
}

TEST(GeneralName, CopiesHoldTheValueOfTheirAlternative) {
    expect_deep_copies({dns_name_tag, uniform_resource_identifier_tag, registered_id_tag},
                       long_text);
    expect_deep_copies({directory_name_tag, ip_address_tag}, CACMPT_BLOB(some_bytes.data(), 3));
    UntypedCell cell{};
    cell.back() = std::byte{8};
    expect_deep_copies({0, other_name_tag, edi_party_name_tag, 10}, cell);
}

TEST(GeneralName, WithoutValueIsRefusedAndSetReplacesAValueOfAnotherType) {
    const CACMPT_GeneralName unset;
    CACMPT_GeneralName name = name_of(dns_name_tag, long_text);
    EXPECT_EQ(error_of([&] { name = unset; }), pointer_is_null);
    EXPECT_EQ(value_of<std::string>(name), long_text);
    const CACMPT_BLOB blob(some_bytes.data(), 2);
    name.set(ip_address_tag, &blob);
    EXPECT_EQ(value_of<CACMPT_BLOB>(name), blob);
    EXPECT_EQ(error_of([&] { name.set(ip_address_tag, nullptr); }), pointer_is_null);
    EXPECT_EQ(name.value(), nullptr);
}

} // namespace
} // namespace norvane
