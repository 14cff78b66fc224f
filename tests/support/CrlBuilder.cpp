#include "support/CrlBuilder.h"

#include <algorithm>

namespace norvane::testing {
namespace {

// The finalizer of SplitMix64: a bijection, so different inputs stay different.
std::uint64_t mixed(std::uint64_t value) {
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9;
    value = (value ^ (value >> 27)) * 0x94d049bb133111eb;
    return value ^ (value >> 31);
}

} // namespace

Bytes CrlEntry::encode() const {
    return sequence(integer_octets(serial), date,
                    extensions.empty() ? Bytes{} : sequence(extensions));
}

Bytes CrlBuilder::tbs(const Bytes& algorithm) const {
    Bytes revoked;
    for (const CrlEntry& entry : entries)
        append(revoked, entry.encode());
    append(revoked, encoded_entries);
    return sequence(version == 0 ? Bytes{} : integer(version - 1),
                    signature_algorithm.value_or(algorithm), issuer, this_update,
                    next_update.value_or(Bytes{}), revoked.empty() ? revoked : sequence(revoked),
                    extensions.empty() ? Bytes{} : context(0, sequence(extensions)));
}

Bytes large_crl_serial(std::uint32_t index) {
    Bytes octets;
    for (const std::uint64_t half : {mixed(~std::uint64_t{index}), mixed(index)})
        for (unsigned shift = 64; shift > 0; shift -= 8)
            octets.push_back(static_cast<std::uint8_t>(half >> (shift - 8) & 0xff));
    octets[0] = (octets[0] & 0x7f) | 0x40; // positive, and no octet too many
    return octets;
}

Bytes large_crl(std::uint32_t entries, const Key& key, const Bytes& issuer) {
    constexpr std::ptrdiff_t serial_offset = 4; // behind the headers of SEQUENCE and INTEGER
    Bytes entry = CrlEntry{.serial = large_crl_serial(0), .extensions = {reason_code(1)}}.encode();
    Bytes all;
    all.reserve(entry.size() * entries);
    for (std::uint32_t index = 0; index < entries; ++index) {
        std::ranges::copy(large_crl_serial(index), entry.begin() + serial_offset);
        entry.back() = static_cast<std::uint8_t>(1 + index % 5);
        append(all, entry);
    }
    return CrlBuilder{.issuer = issuer, .encoded_entries = std::move(all)}.sign(key);
}

} // namespace norvane::testing
