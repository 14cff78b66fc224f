#include "platform/retrieval/Transports.h"

__attribute__((visibility("default"))) const norvane::Transports* norvane_transports() noexcept {
    static constexpr norvane::Transports functions{norvane::fetch_http, norvane::fetch_ldap};
    return &functions;
}
