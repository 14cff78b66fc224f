#include "values/GeneralName.h"

#include <array>
#include <list>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "values/ASN1TypesImpl.h"

#include "PlainError.h"

namespace norvane {
namespace {

constexpr const char* pointer_is_null = "Exception :'pointer is null' at file:'ASN1TypesImpl'";

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

// Long enough to be allocated, so that a value of the wrong type does not go unseen.
const std::string long_text = "http://crl.example.org/path/to/a/list/of/revoked/certificates.crl";

template <class T>
void expect_deep_copies(std::initializer_list<std::uint32_t> tags, const T& value) {
    for (const std::uint32_t tag : tags) {
        const CACMPT_GeneralName name = name_of(tag, value);
        const CACMPT_GeneralName copy = name; // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_EQ(copy.tag(), tag);
        EXPECT_EQ(value_of<T>(copy), value) << tag;
        EXPECT_NE(copy.value(), name.value()) << tag;
    }
}

TEST(GeneralName, CopiesHoldTheValueOfTheirAlternative) {
    expect_deep_copies(
        {rfc822_name_tag, dns_name_tag, uniform_resource_identifier_tag, registered_id_tag},
        long_text);
    const std::array<std::uint8_t, 3> bytes{0x30, 0x01, 0x00};
    expect_deep_copies({directory_name_tag, ip_address_tag}, CACMPT_BLOB(bytes.data(), 3));
    UntypedCell cell{};
    cell.back() = std::byte{8};
    expect_deep_copies({0, other_name_tag, x400_address_tag, edi_party_name_tag, 10}, cell);
}

TEST(GeneralName, CopyWithoutValueThrowsAndLeavesTheTarget) {
    const CACMPT_GeneralName unset;
    EXPECT_EQ(plain_error_of([&] { static_cast<void>(CACMPT_GeneralName(unset)); }),
              pointer_is_null);
    CACMPT_GeneralName target = name_of(dns_name_tag, long_text);
    EXPECT_EQ(plain_error_of([&] { target = unset; }), pointer_is_null);
    EXPECT_EQ(value_of<std::string>(target), long_text);
}

TEST(GeneralName, SetReplacesAValueOfAnotherType) {
    CACMPT_GeneralName name = name_of(dns_name_tag, long_text);
    const CACMPT_BLOB blob(std::array<std::uint8_t, 2>{1, 2}.data(), 2);
    name.set(ip_address_tag, &blob);
    EXPECT_EQ(value_of<CACMPT_BLOB>(name), blob);
    name.set(rfc822_name_tag, &long_text);
    EXPECT_EQ(value_of<std::string>(name), long_text);
    EXPECT_EQ(plain_error_of([&] { name.set(ip_address_tag, nullptr); }), pointer_is_null);
    EXPECT_EQ(name.value(), nullptr);
}

// Serves the alternative 2 only.
class OneAlternative final : public Choice {
  public:
    OneAlternative() = default;
    OneAlternative(const OneAlternative&) = delete;
    OneAlternative& operator=(const OneAlternative&) = delete;
    ~OneAlternative() override { destroy_value(); }

  private:
    [[nodiscard]] const ChoiceValueTraits* traits(std::uint32_t tag) const override {
        const ChoiceValueTraits& only = choice_traits<std::string, 2>;
        return only.has_tag(tag) ? &only : nullptr;
    }
};

TEST(Choice, TagWithoutTraitsIsRefusedAndChangesNothing) {
    OneAlternative choice;
    choice.set(2, &long_text);
    EXPECT_EQ(plain_error_of([&] { choice.set(3, &long_text); }),
              "Exception :'No traits: type is invalid.' at file:'ASN1TypesImpl'");
    EXPECT_EQ(choice.tag(), 2U);
    EXPECT_EQ(*static_cast<const std::string*>(choice.value()), long_text);
}

TEST(ChoiceTraits, CloneAndAssignCopyDeeply) {
    using Names = std::list<CACMPT_GeneralName>;
    const ChoiceValueTraits& traits = choice_traits<Names, 1>;
    Names source{name_of(dns_name_tag, long_text)};
    void* const clone = traits.clone(&source);
    source.push_back(name_of(ip_address_tag, CACMPT_BLOB()));
    const Names& names = *static_cast<const Names*>(clone);
    EXPECT_EQ(names.size(), 1U);
    traits.assign(clone, &source);
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(value_of<std::string>(names.front()), long_text);
    EXPECT_NE(names.front().value(), source.front().value());
    traits.destroy(clone);
    traits.destroy(nullptr);
}

} // namespace
} // namespace norvane
