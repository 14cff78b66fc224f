#pragma once

#include "Checker.h"
#include "Evidence.h"

#include <filesystem>
#include <stdexcept>

namespace norvane {

/// What stands in the way of a decision that is to be made again, on this machine.
class ReplayFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The stores and the configuration of an evidence, in place of this machine's. The system stores
/// lie in a folder that is only this user's, and is removed at the end.
class ReplayedSurroundings {
  public:
    /// Nothing of the process may have looked at its configuration yet. Throws ReplayFailure,
    /// BadEvidence and std::bad_alloc.
    ReplayedSurroundings(const Evidence& evidence, const Members& members);
    ReplayedSurroundings(const ReplayedSurroundings&) = delete;
    ReplayedSurroundings& operator=(const ReplayedSurroundings&) = delete;
    ~ReplayedSurroundings();

    [[nodiscard]] const Stores& stores() const { return stores_; }

    /// The certificate in a member. Throws BadEvidence.
    [[nodiscard]] CertificateHandle certificate(const std::string& name) const;

  private:
    void lay_store(const char* name, const ObjectNames& objects);
    void configure(const Evidence& evidence) const;
    void open_stores(const EvidenceStores& stores);
    [[nodiscard]] StoreHolder store_of(const ObjectNames& objects) const;
    void remove_folder() const noexcept;

    const Members& members_;
    std::filesystem::path folder_;
    Stores stores_;
};

} // namespace norvane
