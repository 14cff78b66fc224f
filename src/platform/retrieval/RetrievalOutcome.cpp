#include "platform/retrieval/RetrievalOutcome.h"

#include "platform/SystemFailure.h"

#include <new>
#include <system_error>

namespace norvane {

RetrievalOutcome outcome_of_thrown() noexcept {
    try {
        throw;
    } catch (const SystemFailure& failure) {
        return {failure.last_error(), nullptr};
    } catch (const std::bad_alloc&) {
        return {ERROR_NOT_ENOUGH_MEMORY, nullptr};
    } catch (const std::system_error&) {
        // No thread, or a lock that cannot be taken.
        return {ERROR_NO_SYSTEM_RESOURCES, nullptr};
    } catch (...) {
        return {ERROR_INTERNAL_ERROR, nullptr};
    }
}

} // namespace norvane
