#include "platform/retrieval/OwnFailure.h"

#include <cerrno>

namespace norvane {

bool is_own_failure(DWORD error) noexcept {
    switch (error) {
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_READ_FAULT:
    case ERROR_INTERNAL_ERROR:
    case ERROR_NO_SYSTEM_RESOURCES:
        return true;
    default:
        return false;
    }
}

DWORD own_failure_of(int error_number) noexcept {
    switch (error_number) {
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case EIO:
        return ERROR_READ_FAULT;
    case EAGAIN:
    case ENOBUFS:
        return ERROR_NO_SYSTEM_RESOURCES;
    default:
        return ERROR_SUCCESS;
    }
}

} // namespace norvane
