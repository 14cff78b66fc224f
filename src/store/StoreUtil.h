#pragma once

#include "asn1/ByteView.h"
#include "store/FindPredicates.h"
#include "store/StoreFindParam.h"
#include "store/StoreHandle.h"
#include "values/ASN1Blob.h"

#include <functional>
#include <list>

namespace norvane {

/// Appends a copy of the encoded bytes of each certificate of the store that `param` keeps, in the
/// order of the store. One about which `param` throws Asn1Exception is left out; with any other
/// exception the search ends, and what was appended stays.
void store_find_all(std::list<CACMPT_BLOB>& out, HCERTSTORE store,
                    StoreFindParam<_CERT_CONTEXT>& param);

/// The same for CRLs.
void store_find_all_crls(std::list<CACMPT_BLOB>& out, HCERTSTORE store,
                         StoreFindParam<_CRL_CONTEXT>& param);

/// Shows `visit` the encoded bytes of each CRL of the store that `param` keeps, in the order of the
/// store, for the time of the call: a large CRL is not copied to be looked at. Failures of `param`
/// as with store_find_all; what `visit` throws ends the search.
void store_visit_crls(HCERTSTORE store, StoreFindParam<_CRL_CONTEXT>& param,
                      const std::function<void(ByteView encoded)>& visit);

} // namespace norvane
