#pragma once

#include "HtmlWriter.h"
#include "Report.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// A page that tells the verdicts of a run and what they rest on, to be attached to a ticket or an
/// audit. It is one file of HTML that is well-formed XML, without scripts and without anything from
/// elsewhere, and forbids both. But for its times it depends on the run alone.
class HtmlReport {
  public:
    /// Adds a certificate; nothing of it is referred to afterwards. The record of the account, if
    /// there is one, is to be whole (Keeping::all_objects).
    void add(const CheckedCertificate& certificate, const Verdict& verdict, const Account& account);

    /// Adds an input that could not be read.
    void add_fault(std::string_view name, std::string_view reason);

    /// Adds a sentence about the run.
    void add_note(std::string_view note) { notes_.emplace_back(note); }

    /// The page. `made` is the time at which that was done.
    [[nodiscard]] std::string page(const FILETIME& made) const;

  private:
    struct Told {
        std::string name;
        Status status;
    };

    void write_head(HtmlWriter& out) const;
    void write_overview(HtmlWriter& out, const FILETIME& made) const;

    HtmlWriter sections_;
    std::vector<Told> told_;
    std::vector<std::string> faults_;
    std::vector<std::string> notes_;
};

} // namespace norvane
