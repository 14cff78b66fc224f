#pragma once

#include "Checker.h"
#include "Console.h"
#include "EvidenceCollector.h"
#include "ExitCode.h"
#include "HtmlReport.h"
#include "Options.h"
#include "Report.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace norvane {

/// One run of the program: reads the stores, then the certificates one after the other, and tells
/// each verdict as soon as it is there.
class Run {
  public:
    /// The options must outlive the run.
    Run(const Options& options, Console& console);

    [[nodiscard]] ExitCode run();

  private:
    struct Held {
        std::string name;
        CertificateHandle context;
    };

    void read_stores();
    void read_system_store(const std::vector<std::string>& paths, const WCHAR* name);
    void read_issuer();
    void require_certificate(const std::string& path);
    void check_input(const std::string& argument);
    void check_files(const std::string& path);
    void check_file(const std::string& name, const FileContent& content, FileOrigin origin);
    void take(Held certificate);
    /// Gives how many were looked at.
    std::size_t check(std::span<const Held> certificates);
    void check_list();
    [[nodiscard]] Keeping keeping() const;
    [[nodiscard]] bool has_page() const { return !options_.report.empty(); }
    void tell(const CheckedCertificate& certificate, const Verdict& verdict,
              const DecisionRecord* record);
    void write_evidence();
    void write(const std::string& text);
    void write_page();

    const Options& options_;
    Console& console_;
    Outcome outcome_;
    const FaultSink fault_;
    Stores stores_;
    Checker checker_;
    const Colour colour_;
    std::size_t certificates_ = 0;              ///< that were found in inputs
    bool told_ = false;                         ///< Something was told to people.
    HtmlReport page_;                           ///< It stays empty if none is asked for.
    std::vector<Held> list_;                    ///< What is to be checked in one call.
    std::optional<EvidenceCollector> evidence_; ///< If it is asked for, from the first check on.
    std::vector<InputFault> faults_;            ///< For the evidence.
};

} // namespace norvane
