#include "chain/PathFailure.h"

#include <iterator>
#include <utility>

namespace norvane {
namespace {

bool is_worth_recording(const ChainValidator& chain, std::uint32_t status) {
    return !chain.best_path || compare_status(status, chain.best_path->path_status) >= 1;
}

/// A copy of the path, and in it the element that stands at `position` in the original.
std::pair<Chain, Chain::Position> copy_with(Chain& path, Chain::Position position) {
    std::pair<Chain, Chain::Position> result{path, {}};
    result.second =
        std::next(result.first.items.begin(), std::distance(path.items.begin(), position));
    return result;
}

} // namespace

int compare_status(std::uint32_t new_status, std::uint32_t old_status) {
    constexpr std::uint32_t from_worst_to_least_bad[] = {
        IS_PARTIAL_CHAIN,
        IS_NOT_SIGNATURE_VALID,
        IS_UNTRUSTED_ROOT,
        IS_NOT_TIME_VALID,
        IS_REVOKED,
        REVOCATION_STATUS_UNKNOWN,
        IS_NOT_VALID_FOR_USAGE,
        INVALID_BASIC_CONSTRAINTS,
    };
    if (old_status == 0) {
        return new_status != 0 ? 1 : 0;
    }
    for (const std::uint32_t bit : from_worst_to_least_bad) {
        if (((new_status ^ old_status) & bit) != 0) {
            return (new_status & bit) != 0 ? -1 : 1;
        }
    }
    return 0;
}

void record_failure(ChainValidator& chain, std::uint32_t status, Chain::Position position) {
    if (!is_worth_recording(chain, status)) {
        return;
    }
    auto [failed, marked] = copy_with(chain.path, position);
    marked->status = status;
    failed.path_status = status;
    chain.best_path = std::move(failed);
}

void record_revoked(ChainValidator& chain, std::uint32_t status, std::uint32_t reason,
                    Chain::Position position) {
    if (!is_worth_recording(chain, status)) {
        return;
    }
    auto [failed, marked] = copy_with(chain.path, position);
    marked->status = status;
    marked->reason = reason;
    failed.path_status = status;
    failed.path_reason = reason;
    chain.best_path = std::move(failed);
}

void record_partial_chain(ChainValidator& chain, std::uint32_t status) {
    if (!is_worth_recording(chain, status)) {
        return;
    }
    Chain failed = chain.path;
    failed.path_status = status;
    failed.path_reason = 0;
    chain.best_path = std::move(failed);
}

void record_broken_link(ChainValidator& chain, Chain::Position position) {
    if (!is_worth_recording(chain, IS_PARTIAL_CHAIN)) {
        return;
    }
    Chain failed;
    failed.items.assign(position, chain.path.items.end());
    failed.path_status = IS_PARTIAL_CHAIN;
    chain.best_path = std::move(failed);
}

} // namespace norvane
