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

/// A new folder that is only this user's, and is removed with all in it at the end.
class PrivateFolder {
  public:
    /// Throws ReplayFailure.
    PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// The stores and the configuration of an evidence, in place of this machine's. The system stores
/// lie in a private folder.
class ReplayedSurroundings {
  public:
    /// Nothing of the process may have looked at its configuration yet. Throws ReplayFailure,
    /// BadEvidence and std::bad_alloc.
    ReplayedSurroundings(const Evidence& evidence, const Members& members);
    ReplayedSurroundings(const ReplayedSurroundings&) = delete;
    ReplayedSurroundings& operator=(const ReplayedSurroundings&) = delete;
    ~ReplayedSurroundings() = default;

    [[nodiscard]] const Stores& stores() const { return stores_; }

    /// The certificate in a member. Throws BadEvidence.
    [[nodiscard]] CertificateHandle certificate(const std::string& name) const;

  private:
    void lay_store(const char* name, const ObjectNames& objects);
    void configure(const Evidence& evidence) const;
    void open_stores(const EvidenceStores& stores);
    [[nodiscard]] StoreHolder store_of(const ObjectNames& objects) const;

    const Members& members_;
    PrivateFolder folder_;
    Stores stores_;
};

} // namespace norvane
