#include "values/GeneralName.h"

#include <algorithm>
#include <array>
#include <list>
#include <string>

#include "values/ASN1TypesImpl.h"
#include "values/Date.h"

namespace norvane {

template const ChoiceValueTraitsT<UntypedCell, 0> choice_traits<UntypedCell, 0>;
template const ChoiceValueTraitsT<std::string, 2> choice_traits<std::string, 2>;
template const ChoiceValueTraitsT<std::string, 3> choice_traits<std::string, 3>;
template const ChoiceValueTraitsT<std::string, 7> choice_traits<std::string, 7>;
template const ChoiceValueTraitsT<std::string, 9> choice_traits<std::string, 9>;
template const ChoiceValueTraitsT<CACMPT_BLOB, 1> choice_traits<CACMPT_BLOB, 1>;
template const ChoiceValueTraitsT<CACMPT_BLOB, 5> choice_traits<CACMPT_BLOB, 5>;
template const ChoiceValueTraitsT<CACMPT_BLOB, 8> choice_traits<CACMPT_BLOB, 8>;
template const ChoiceValueTraitsT<CACMPT_OtherHashAlgAndValue, 2>
    choice_traits<CACMPT_OtherHashAlgAndValue, 2>;
template const ChoiceValueTraitsT<std::list<CACMPT_GeneralName>, 1>
    choice_traits<std::list<CACMPT_GeneralName>, 1>;
template const ChoiceValueTraitsT<CACMPT_Date, 1> choice_traits<CACMPT_Date, 1>;
template const ChoiceValueTraitsT<CACMPT_Date, 2> choice_traits<CACMPT_Date, 2>;

namespace {

constexpr std::array<const ChoiceValueTraits*, 6> general_name_traits{
    &choice_traits<std::string, rfc822_name_tag>,
    &choice_traits<std::string, dns_name_tag>,
    &choice_traits<CACMPT_BLOB, directory_name_tag>,
    &choice_traits<std::string, uniform_resource_identifier_tag>,
    &choice_traits<CACMPT_BLOB, ip_address_tag>,
    &choice_traits<std::string, registered_id_tag>,
};

} // namespace

CACMPT_GeneralNameImpl::~CACMPT_GeneralNameImpl() { destroy_value(); }

const ChoiceValueTraits* CACMPT_GeneralNameImpl::traits(std::uint32_t tag) const {
    const auto* const found = std::ranges::find_if(
        general_name_traits, [tag](const auto* candidate) { return candidate->has_tag(tag); });
    return found != general_name_traits.end() ? *found : &choice_traits<UntypedCell, 0>;
}

CACMPT_GeneralName::CACMPT_GeneralName() : impl_(std::make_unique<CACMPT_GeneralNameImpl>()) {}

CACMPT_GeneralName::CACMPT_GeneralName(const CACMPT_GeneralName& other) : CACMPT_GeneralName() {
    set(other.tag(), other.value());
}

CACMPT_GeneralName& CACMPT_GeneralName::operator=(const CACMPT_GeneralName& other) {
    if (this != &other) {
        *this = CACMPT_GeneralName(other);
    }
    return *this;
}

} // namespace norvane
