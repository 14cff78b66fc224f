#include "values/ProcessFailure.h"

#include "values/CAtlException.h"

#include <algorithm>
#include <new>
#include <stdexcept>

namespace norvane {
namespace {

/// As statuses, so that a last error and the HRESULT that carries it are one.
constexpr std::uint32_t process_errors[] = {
    status_from_error(ERROR_NOT_ENOUGH_MEMORY),
    status_from_error(ERROR_OUTOFMEMORY),
    static_cast<std::uint32_t>(NTE_NO_MEMORY),
    static_cast<std::uint32_t>(CRYPT_E_ASN1_MEMORY),
    status_from_error(ERROR_TOO_MANY_OPEN_FILES),
    status_from_error(ERROR_NO_SYSTEM_RESOURCES),
    status_from_error(ERROR_NOT_ENOUGH_QUOTA),
    status_from_error(ERROR_READ_FAULT),
    status_from_error(ERROR_INTERNAL_ERROR),
    static_cast<std::uint32_t>(NTE_FAIL),
    static_cast<std::uint32_t>(NTE_PROVIDER_DLL_FAIL),
    static_cast<std::uint32_t>(E_UNEXPECTED),
};

} // namespace

bool is_process_error(std::uint32_t code) noexcept {
    return std::ranges::find(process_errors, status_from_error(code)) != std::end(process_errors);
}

void throw_platform_error(std::uint32_t code, std::string_view file, std::uint32_t line) {
    require_no_process_error(code, file, line);
    throw CryptException(code, file, line);
}

void throw_bare_status(std::uint32_t code, std::string_view file, std::uint32_t line) {
    require_no_process_error(code, file, line);
    throw CAtlException(status_from_error(code));
}

void require_no_process_error(std::uint32_t code, std::string_view file, std::uint32_t line) {
    if (is_process_error(code)) {
        throw PlatformFailure(code, file, line);
    }
}

std::uint32_t process_error_in_flight() noexcept {
    try {
        throw;
    } catch (const ProcessFailure& failure) {
        return failure.error();
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (const CAException&) {
        return 0;
    } catch (const CAtlException&) {
        return 0;
    } catch (const std::length_error&) { // A list that is as long as a list can be.
        return 0;
    } catch (...) {
        return static_cast<std::uint32_t>(E_UNEXPECTED);
    }
}

} // namespace norvane
