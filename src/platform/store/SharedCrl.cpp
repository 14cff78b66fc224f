#include "platform/store/SharedCrl.h"

#include "asn1/Decode.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>
#include <vector>

namespace norvane {
namespace {

constexpr std::uint8_t sign_bit = 0x80;

/// The octets of an INTEGER without those in front that only repeat the sign.
ByteView significant_octets(ByteView integer) {
    while (integer.length > 1) {
        const std::uint8_t first = integer.data[0];
        const bool next_negative = (integer.data[1] & sign_bit) != 0;
        if (first != (next_negative ? 0xff : 0x00)) {
            break;
        }
        ++integer.data;
        --integer.length;
    }
    return integer;
}

/// Those of the tables of found entries. They are few and shared by all CRLs, since fork could not
/// find one in each CRL.
constinit std::array<std::mutex, 4> entry_locks;

} // namespace

void visit_crl_entry_locks(LockVisitor visit) { std::ranges::for_each(entry_locks, visit); }

void visit_shared_crl_locks(LockVisitor visit) {
    SharedObjects<SharedCrl>::instance().visit_locks(visit);
}

std::variant<Ref<SharedCrl>, ObjectFault> SharedCrl::make(EncodedBytes bytes, std::uint64_t hash) {
    auto object = Ref<SharedCrl>::adopt(new SharedCrl(std::move(bytes), hash));
    ASN1T_CertificateList tree;
    if (decode_element(object->ctxt_, object->encoded(), tree) < 0) {
        return object_fault(object->ctxt_);
    }
    if (!object->lay_out(tree.tbsCertList)) {
        return ObjectFault{CRYPT_E_ASN1_CORRUPT,
                           "an update in CertificateList.tbsCertList is not a time"};
    }
    return object;
}

bool SharedCrl::lay_out(const ASN1T_TBSCertList& tbs) {
    const auto this_update = to_file_time(tbs.thisUpdate);
    const auto next_update =
        tbs.m.nextUpdatePresent ? to_file_time(tbs.nextUpdate) : std::optional(FILETIME{});
    if (!this_update || !next_update) {
        return false;
    }
    fields_.reserve_extensions(tbs.crlExtensions);
    fields_.reserve(tbs.signature.algorithm);
    fields_.reserve(tbs.issuer);
    fields_.allocate();

    fields_.extensions(tbs.crlExtensions, info_.cExtension, info_.rgExtension);
    info_.dwVersion = static_cast<DWORD>(tbs.version);
    info_.SignatureAlgorithm = fields_.algorithm(tbs.signature);
    info_.Issuer = fields_.encoding(tbs.issuer);
    info_.ThisUpdate = *this_update;
    info_.NextUpdate = *next_update;
    info_.cCRLEntry = tbs.revokedCertificates.count;
    revoked_ = tbs.revokedCertificates;
    cell_ = {.context = {.dwCertEncodingType = X509_ASN_ENCODING,
                         .pbCrlEncoded = to_blob(encoded()).pbData,
                         .cbCrlEncoded = encoded().length,
                         .pCrlInfo = &info_,
                         .hCertStore = nullptr},
             .object = this};
    return true;
}

CRL_ENTRY* SharedCrl::find_entry(const CRYPT_INTEGER_BLOB& serial) {
    if (serial.cbData == 0) {
        return nullptr;
    }
    std::vector<std::uint8_t> octets(serial.cbData);
    std::reverse_copy(serial.pbData, serial.pbData + serial.cbData, octets.begin());
    const ByteView sought = significant_octets({octets.data(), serial.cbData});
    const auto revoked = revoked_.find([&](ByteView listed) {
        // The last octet alone tells most numbers apart.
        return listed.end()[-1] == octets.back() && significant_octets(listed) == sought;
    });
    return revoked == revoked_.end() ? nullptr : entry_for(*revoked);
}

CRL_ENTRY* SharedCrl::entry_for(const ASN1T_RevokedCertificate& revoked) {
    const ByteView serial = revoked.userCertificate.content();
    const std::lock_guard lock(entry_locks[hash() % entry_locks.size()]);
    if (const auto known = entries_.find(serial.data); known != entries_.end()) {
        return known->second.entry;
    }
    Entry made;
    made.fields.reserve<CRL_ENTRY>();
    made.fields.reserve_extensions(revoked.crlEntryExtensions);
    made.fields.reserve(serial);
    made.fields.allocate();
    made.entry = made.fields.make<CRL_ENTRY>();
    made.fields.extensions(revoked.crlEntryExtensions, made.entry->cExtension,
                           made.entry->rgExtension);
    made.entry->SerialNumber = made.fields.little_endian(serial);
    made.entry->RevocationDate = to_file_time(revoked.revocationDate).value_or(FILETIME{});
    return entries_.emplace(serial.data, std::move(made)).first->second.entry;
}

} // namespace norvane
