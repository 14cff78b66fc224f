#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace norvane {

/// What is counted in a question, and in what unit.
enum class Resource : std::uint8_t {
    verifications,  ///< of signatures
    hashed_bytes,   ///< for signatures
    shown_objects,  ///< certificates and CRLs shown by stores, each time
    retrievals,     ///< that may go over the wire
    retrieval_time, ///< milliseconds that those take
};
inline constexpr std::size_t resource_count = 5;

/// As section [limits] of the configuration names its limit.
[[nodiscard]] constexpr std::string_view name_of(Resource resource) noexcept {
    constexpr std::string_view names[resource_count] = {
        "signature_verifications", "hashed_bytes", "shown_objects", "retrievals", "retrieval_time"};
    return names[static_cast<std::size_t>(resource)];
}

/// An amount of each resource.
class Quotas {
  public:
    [[nodiscard]] std::uint64_t& operator[](Resource resource) noexcept {
        return amounts_[static_cast<std::size_t>(resource)];
    }
    [[nodiscard]] std::uint64_t operator[](Resource resource) const noexcept {
        return amounts_[static_cast<std::size_t>(resource)];
    }

  private:
    std::array<std::uint64_t, resource_count> amounts_{};
};

/// What an outermost question may cost. The limits are values of the registry, of 32 or 64 bits,
/// under HKEY_LOCAL_MACHINE in "SOFTWARE\Norvane\PkiValidator"; one that is not there has its
/// default. They are read once in the life of the process. Throws PlatformFailure if they cannot be
/// read; the next call tries again.
[[nodiscard]] const Quotas& configured_quotas();

} // namespace norvane
