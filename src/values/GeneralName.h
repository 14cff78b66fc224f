#pragma once

#include <cstdint>
#include <memory>

#include "values/Choice.h"

namespace norvane {

/// The alternatives of GeneralName (RFC 5280, section 4.2.1.6), numbered from 1 in the order of
/// the CHOICE, and what holds the value of each.
enum GeneralNameTag : std::uint32_t {
    other_name_tag = 1,                  ///< UntypedCell
    rfc822_name_tag = 2,                 ///< std::string
    dns_name_tag = 3,                    ///< std::string
    x400_address_tag = 4,                ///< UntypedCell
    directory_name_tag = 5,              ///< CACMPT_BLOB, the DER Name
    edi_party_name_tag = 6,              ///< UntypedCell
    uniform_resource_identifier_tag = 7, ///< std::string
    ip_address_tag = 8,                  ///< CACMPT_BLOB
    registered_id_tag = 9,               ///< std::string, dotted text
};

/// The choice inside a general name. Every tag has traits: a tag outside GeneralNameTag holds an
/// UntypedCell.
class CACMPT_GeneralNameImpl final : public Choice {
  public:
    CACMPT_GeneralNameImpl() noexcept = default;
    CACMPT_GeneralNameImpl(const CACMPT_GeneralNameImpl&) = delete;
    CACMPT_GeneralNameImpl& operator=(const CACMPT_GeneralNameImpl&) = delete;
    ~CACMPT_GeneralNameImpl() override;

  private:
    [[nodiscard]] const ChoiceValueTraits* traits(std::uint32_t tag) const override;
};

/// A general name that is copied by value. A name to which nothing was set, with tag 0, cannot be
/// copied: that throws CAException "pointer is null". One that was moved from may only be assigned
/// to or destroyed.
class CACMPT_GeneralName {
  public:
    CACMPT_GeneralName();
    CACMPT_GeneralName(const CACMPT_GeneralName& other);
    CACMPT_GeneralName(CACMPT_GeneralName&&) noexcept = default;
    /// On a failure the target is unchanged.
    CACMPT_GeneralName& operator=(const CACMPT_GeneralName& other);
    CACMPT_GeneralName& operator=(CACMPT_GeneralName&&) noexcept = default;
    virtual ~CACMPT_GeneralName() = default;

    /// See Choice::set.
    void set(std::uint32_t tag, const void* value) { impl_->set(tag, value); }

    [[nodiscard]] std::uint32_t tag() const noexcept { return impl_->tag(); }
    /// Of the type that GeneralNameTag tells; null as long as nothing was set.
    [[nodiscard]] const void* value() const noexcept { return impl_->value(); }

  private:
    std::unique_ptr<CACMPT_GeneralNameImpl> impl_;
};

} // namespace norvane
