#include "platform/retrieval/Transports.h"

#include "platform/ResidentLibrary.h"

namespace norvane {
namespace {

const Transports* load_transports() {
    const auto entry = reinterpret_cast<decltype(&norvane_transports)>(
        resident_function("norvane_transports.so", "norvane_transports"));
    return entry == nullptr ? nullptr : entry();
}

} // namespace

const Transports* transports() {
    static const Transports* const loaded = load_transports();
    return loaded;
}

} // namespace norvane
