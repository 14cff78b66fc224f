#pragma once

#include "values/Exceptions.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <string_view>
#include <type_traits>

namespace norvane {

// There are two kinds of exceptions. Those about the material (it does not decode, does not verify,
// does not fit) cost what the rules say: a candidate, a distribution point, a CRL. Those of the
// process (no memory, no descriptors, a library that failed, a quota that is spent) say nothing
// about any certificate or CRL, and end the question with no check. They are told apart here, and
// nowhere else.

/// Marks the exceptions of the process, whatever else they are.
class ProcessFailure {
  public:
    explicit ProcessFailure(std::uint32_t error) noexcept : error_(error) {}
    virtual ~ProcessFailure() = default;

    /// The platform's number for it.
    [[nodiscard]] std::uint32_t error() const noexcept { return error_; }

  protected:
    ProcessFailure(const ProcessFailure&) = default;
    ProcessFailure& operator=(const ProcessFailure&) = default;

  private:
    std::uint32_t error_;
};

/// There is no memory for the bytes of an item.
class OutOfMemory final : public CAException, public ProcessFailure {
  public:
    OutOfMemory(std::string_view file, std::uint32_t line)
        : CAException("out of memory", file, line), ProcessFailure(ERROR_NOT_ENOUGH_MEMORY) {}
};

/// A platform call failed because the process did.
class PlatformFailure final : public CryptException, public ProcessFailure {
  public:
    PlatformFailure(std::uint32_t code, std::string_view file, std::uint32_t line)
        : CryptException(code, file, line), ProcessFailure(code) {}
};

/// Whether a last error or HRESULT tells of the process and not of what a call was about.
[[nodiscard]] bool is_process_error(std::uint32_t code) noexcept;

/// Throws for a platform call that failed with `code`: PlatformFailure if the process is to blame,
/// CryptException otherwise.
[[noreturn]] void throw_platform_error(std::uint32_t code, std::string_view file,
                                       std::uint32_t line);

/// throw_platform_error with a bare status in the place of CryptException: CAtlException.
[[noreturn]] void throw_bare_status(std::uint32_t code, std::string_view file, std::uint32_t line);

/// Throws PlatformFailure if `code` is a process error.
void require_no_process_error(std::uint32_t code, std::string_view file, std::uint32_t line);

/// Makes a call to the platform for which failing is an answer too: there is no such object, the
/// signature does not hold. Throws PlatformFailure if it failed because the process did.
template <class Call>
[[nodiscard]] std::invoke_result_t<Call> platform_answer(Call call, std::string_view file,
                                                         std::uint32_t line) {
    SetLastError(ERROR_SUCCESS);
    const auto answer = call();
    if (!answer) {
        require_no_process_error(GetLastError(), file, line);
    }
    return answer;
}

/// Of the exception that is being handled: 0 if it is about the material, else the platform's
/// number for how the process failed. Only in a handler.
[[nodiscard]] std::uint32_t process_error_in_flight() noexcept;

/// Calls `step` and gives its answer. What it throws about the material goes no further: it is a
/// false answer, and `tell`, which throws nothing, is called in the handler. A failure of the
/// process passes.
template <class Step, class Tell>
[[nodiscard]] bool holds_without_fault(Step step, Tell tell) {
    try {
        return step();
    } catch (...) {
        if (process_error_in_flight() != 0) {
            throw;
        }
        tell();
        return false;
    }
}

/// The same for a step without an answer: what it throws about the material costs only the step.
template <class Step, class Tell>
void contain_fault(Step step, Tell tell) {
    static_cast<void>(holds_without_fault(
        [&] {
            step();
            return true;
        },
        tell));
}

} // namespace norvane
