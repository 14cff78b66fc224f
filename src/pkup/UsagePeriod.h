#pragma once

#include "asn1/ByteView.h"

#include <chrono>
#include <optional>

namespace norvane {

/// When a private key may be used. A bound that is absent bounds nothing.
struct UsagePeriod {
    std::optional<std::chrono::sys_seconds> not_before;
    std::optional<std::chrono::sys_seconds> not_after;

    /// The bounds belong to the period.
    [[nodiscard]] bool contains(std::chrono::sys_seconds moment) const {
        return (!not_before || moment >= *not_before) && (!not_after || moment <= *not_after);
    }
};

/// The period that a certificate's extension 2.5.29.16 tells, without bounds if it has none:
///
///     PrivateKeyUsagePeriod ::= SEQUENCE {
///         notBefore [0] GeneralizedTime OPTIONAL,
///         notAfter  [1] GeneralizedTime OPTIONAL }    (RFC 3280 4.2.1.4)
///
/// Nothing if the certificate or the extension is malformed. That includes an extension that has
/// neither bound or stands there twice.
[[nodiscard]] std::optional<UsagePeriod> read_usage_period(ByteView certificate);

} // namespace norvane
