// Which exceptions are about the material, and which end the question.
#include "call/Question.h"
#include "values/CAtlException.h"

#include <gtest/gtest.h>
#include <system_error>

namespace norvane {
namespace {

constexpr auto module_name = source_module::chain;

[[noreturn]] void fail_with(DWORD code) { throw_platform_error(code, module_name, 1); }

TEST(ProcessFailure, PassesWhereFaultsOfTheMaterialAreContained) {
    const struct {
        void (*step)();
        DWORD error; // 0: about the material
    } rows[] = {
        {[] { throw Asn1Exception("x", module_name, 1); }, 0},
        {[] { fail_with(static_cast<DWORD>(NTE_BAD_SIGNATURE)); }, 0},
        {[] { fail_with(static_cast<DWORD>(CRYPT_E_NOT_FOUND)); }, 0},
        {[] { throw_bare_status(ERROR_FILE_NOT_FOUND, module_name, 1); }, 0},
        {[] { throw std::length_error("list<T> too long"); }, 0},
        {[] { throw std::bad_alloc(); }, ERROR_NOT_ENOUGH_MEMORY},
        {[] { throw OutOfMemory(module_name, 1); }, ERROR_NOT_ENOUGH_MEMORY},
        {[] { throw std::system_error(EAGAIN, std::system_category()); },
         static_cast<DWORD>(E_UNEXPECTED)},
        {[] { throw QuotaSpent("x", 1); }, ERROR_NOT_ENOUGH_QUOTA},
        {[] { fail_with(ERROR_READ_FAULT); }, ERROR_READ_FAULT},
        {[] { fail_with(static_cast<DWORD>(E_OUTOFMEMORY)); }, static_cast<DWORD>(E_OUTOFMEMORY)},
        {[] { throw_bare_status(ERROR_TOO_MANY_OPEN_FILES, module_name, 1); },
         ERROR_TOO_MANY_OPEN_FILES},
        {[] {
             static_cast<void>(platform_answer(
                 [] { return SetLastError(static_cast<DWORD>(NTE_NO_MEMORY)), FALSE; }, module_name,
                 1));
         },
         static_cast<DWORD>(NTE_NO_MEMORY)},
    };
    for (const auto& row : rows) {
        DWORD error = 0;
        try {
            contain_fault(row.step, [] {});
        } catch (...) {
            error = process_error_in_flight();
        }
        EXPECT_EQ(error, row.error) << &row - rows;
    }
    // A last error from before is none of the call's.
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_FALSE(platform_answer([] { return FALSE; }, module_name, 1));
}

} // namespace
} // namespace norvane
