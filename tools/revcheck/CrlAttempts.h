#pragma once

#include "DecisionRecord.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace norvane {

/// Where a decision has tried a CRL.
enum class AttemptScope : std::uint8_t {
    point,         ///< at one distribution point
    all_points,    ///< before any: it was passed over for all of them
    without_point, ///< as a CRL of the certificate's issuer
};

/// How far a CRL has come, in ascending order.
enum class Standing : std::uint8_t { unknown, closed, nothing_new, used };

/// One attempt of a decision to use a CRL.
struct CrlAttempt {
    std::size_t crl = 0;    ///< among the objects of the record
    std::size_t branch = 0; ///< the place of the node that the CRL is taken up in
    std::size_t first = 0;  ///< of the nodes that tell of it
    std::size_t end = 0;
    AttemptScope scope = AttemptScope::without_point;
    std::string_view point{}; ///< its name in the record, if it is an attempt at one
    Standing standing = Standing::unknown;
    std::size_t place = 0;      ///< of what it ended at, among the nodes; unless unknown
    std::uint16_t distance = 0; ///< of what it failed at, see EventWords

    [[nodiscard]] bool came_farther_than(const CrlAttempt& other) const {
        return standing != other.standing ? standing > other.standing : distance > other.distance;
    }
};

/// All attempts of a question in their order, without those of the questions in it.
[[nodiscard]] std::vector<CrlAttempt> attempts_of(const DecisionRecord& record,
                                                  std::size_t question);

/// The CRLs that the question speaks of itself, in the order in which it does.
[[nodiscard]] std::vector<std::size_t> crls_of(const DecisionRecord& record, std::size_t question);

} // namespace norvane
