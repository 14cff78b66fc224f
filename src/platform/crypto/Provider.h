#pragma once

#include <norvane/wincrypt.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace norvane {

using Octets = std::span<const std::uint8_t>;

/// An algorithm that a provider offers.
struct Algorithm {
    ALG_ID id;
    /// Lengths of the hash or of the key.
    DWORD default_bits;
    DWORD min_bits;
    DWORD max_bits;
    std::string_view name;      ///< at most 19 characters
    std::string_view long_name; ///< at most 39 characters
};

/// The value of a hash.
struct Digest {
    static constexpr std::size_t max_size = 64;

    std::array<std::uint8_t, max_size> octets{};
    std::size_t size = 0;

    [[nodiscard]] Octets view() const noexcept { return {octets.data(), size}; }
};

/// A hash at work. One thread at a time uses it.
class Hash {
  public:
    virtual ~Hash() = default;
    virtual void update(Octets bytes) = 0;
    /// The value; afterwards the hash is of no more use.
    [[nodiscard]] virtual Digest finish() = 0;
};

enum class Verdict : std::uint8_t {
    good,
    bad,        ///< a fact about the three; a failure to find out is thrown
    wrong_hash, ///< the key does not go with this hash
};

/// An imported key. Many threads use it at once.
class PublicKey {
  public:
    virtual ~PublicKey() = default;
    /// @param hash the algorithm that `digest` comes from, one of the provider's.
    /// @param signature as it stands in the BIT STRING of a certificate.
    [[nodiscard]] virtual Verdict verify(ALG_ID hash, Octets digest, Octets signature) const = 0;
};

/// A cryptographic provider: a class for each library that does the work. It is made known by a row
/// in ProviderTable.cpp; algorithms that are new to the platform get their rows in OidTable.cpp.
///
/// Many threads use a provider at once. Its functions may throw anything; what they throw makes the
/// platform's function fail.
class Provider {
  public:
    virtual ~Provider() = default;
    /// All that can be used, none if the provider has not been installed.
    [[nodiscard]] virtual std::span<const Algorithm> algorithms() const = 0;
    /// Null if the provider does not have this algorithm.
    [[nodiscard]] virtual std::unique_ptr<Hash> create_hash(ALG_ID algorithm) const = 0;
    /// Makes a key from the parts of a SubjectPublicKeyInfo, of which nothing is known but that
    /// they are bytes. Null if they are not a key that is taken.
    ///
    /// @param algorithm of the signature class, one of the provider's.
    /// @param parameters the encoded parameters of the algorithm, empty if absent.
    [[nodiscard]] virtual std::shared_ptr<const PublicKey>
    import_key(ALG_ID algorithm, Octets parameters, Octets key) const = 0;

    [[nodiscard]] bool offers(ALG_ID algorithm) const {
        const auto all = algorithms();
        return std::ranges::find(all, algorithm, &Algorithm::id) != all.end();
    }
};

} // namespace norvane
