#pragma once

#include "Checker.h"
#include "Evidence.h"
#include "Report.h"

#include <array>
#include <set>
#include <span>

namespace norvane {

/// Something of an input that could not be taken.
struct InputFault {
    std::string name;
    std::string reason;
};

/// Collects what the decisions of a run rest on, from the stores and from their records, and writes
/// it into a file. It belongs to one thread.
class EvidenceCollector {
  public:
    /// To be made when the stores have been read. Both must outlive the collector. Throws
    /// std::bad_alloc.
    EvidenceCollector(const Options& options, const Stores& stores);
    EvidenceCollector(const EvidenceCollector&) = delete;
    EvidenceCollector& operator=(const EvidenceCollector&) = delete;
    ~EvidenceCollector();

    /// Begins a check of these certificates: what its thread reads from clocks is noted from now
    /// on. Gives the moment to check for, in whole seconds.
    [[nodiscard]] FILETIME begin_check(std::span<const CheckedCertificate> certificates);
    /// @param record of the check, with all objects.
    void end_check(const DecisionRecord& record);
    /// A verdict of the check, in the order of telling.
    void add_verdict(const CheckedCertificate& certificate, const Verdict& verdict,
                     const DecisionRecord* record);

    /// To be called once. Throws EvidenceNotWritten and std::bad_alloc.
    void write(const std::string& path, std::span<const InputFault> faults);

  private:
    /// What a store shows, which lives as long as the store is open.
    struct StoreContent {
        std::vector<ByteView> certificates;
        std::vector<ByteView> crls;

        bool operator==(const StoreContent&) const;
    };
    struct SystemStore {
        const WCHAR* name;
        StoreHolder store;
        StoreContent content;
    };

    static SystemStore open(const WCHAR* name);
    static StoreContent content_of(HCERTSTORE store);
    static ULONGLONG hear_clock(DWORD clock, ULONGLONG reading, void* self) noexcept;

    void note_reading(DWORD clock, ULONGLONG reading);
    void add_retrieval(const DecisionRecord& record, std::size_t place);
    std::string add_object(ByteView encoded, ObjectType type);
    std::string add_object(const RecordedObject& object);
    ObjectNames add_certificates(const StoreContent& content);
    void add_consulted_crls(const StoreContent& content, ObjectNames& names);
    void require_unchanged(const SystemStore& store) const;
    void add_stores();
    void add_settings();

    const Options& options_;
    const Stores& stores_;
    SystemStore root_;
    SystemStore ca_;
    Evidence evidence_;
    Members members_;
    std::set<std::size_t> crl_sizes_; ///< of the CRLs among the members
    bool all_crls_ = false;           ///< a decision has ended at how many stores had shown
    std::array<std::optional<ULONGLONG>, 2> first_readings_; ///< of each clock, in this check
    std::string flaw_; ///< why there can be no evidence; empty if there can
};

} // namespace norvane
