#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Which objects of a store are kept. The store itself filters by `find_type` and `find_para`,
/// which are those of the platform; `match` then decides about each object that comes out.
///
/// A predicate lives as long as one search and owns none of what it points to, unless it says so.
template <class Context>
class StoreFindParam {
  public:
    StoreFindParam() = default;
    StoreFindParam(const StoreFindParam&) = delete;
    StoreFindParam& operator=(const StoreFindParam&) = delete;
    virtual ~StoreFindParam() = default;

    /// What it throws ends the search, but Asn1Exception, which leaves out the object.
    [[nodiscard]] virtual bool match(const Context* /*context*/) { return true; }

    DWORD find_type = 0; ///< 0 asks for all.
    const void* find_para = nullptr;
};

} // namespace norvane
