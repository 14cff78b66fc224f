#pragma once

#include "Checker.h"

#include <cstdint>

namespace norvane {

/// What the program ends with. Of several that apply the first in `rank` counts.
enum class ExitCode : std::uint8_t {
    all_good = 0,
    revoked = 1,
    no_check = 2,
    other_replay = 3, ///< a replay has come to something else
    usage = 64,       ///< EX_USAGE
    bad_input = 65,   ///< EX_DATAERR
    no_memory = 71,   ///< EX_OSERR
    no_output = 74,   ///< EX_IOERR
};

[[nodiscard]] constexpr ExitCode code_of(Status status) noexcept {
    switch (status) {
    case Status::good:
        return ExitCode::all_good;
    case Status::revoked:
        return ExitCode::revoked;
    case Status::no_check:
        break;
    }
    return ExitCode::no_check;
}

/// Keeps the code of a run: each event may only make it worse.
///
/// What could not be read stands over every verdict, since a script that sees a verdict's code may
/// rely on it that all was looked at. Of the verdicts a revocation counts more than a check that
/// was not possible, and a replay that differs more than either.
class Outcome {
  public:
    void note(ExitCode code) noexcept {
        if (rank(code) > rank(code_)) {
            code_ = code;
        }
    }
    [[nodiscard]] ExitCode code() const noexcept { return code_; }

  private:
    [[nodiscard]] static constexpr int rank(ExitCode code) noexcept {
        switch (code) {
        case ExitCode::all_good:
            return 0;
        case ExitCode::no_check:
            return 1;
        case ExitCode::revoked:
            return 2;
        case ExitCode::other_replay:
            return 3;
        case ExitCode::bad_input:
            return 4;
        case ExitCode::no_memory:
        case ExitCode::no_output:
            return 5;
        case ExitCode::usage:
            return 6;
        }
        return 0;
    }

    ExitCode code_ = ExitCode::all_good;
};

} // namespace norvane
