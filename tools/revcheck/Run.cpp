#include "Run.h"

#include "Configure.h"
#include "EvidenceArchive.h"
#include "ReportFile.h"
#include "Times.h"

#include <algorithm>
#include <new>
#include <utility>

namespace norvane {
namespace {

constexpr std::string_view standard_input = "-";

} // namespace

Run::Run(const Options& options, Console& console)
    : options_(options), console_(console),
      fault_([this](const std::string& name, const std::string& reason) {
          console_.complain(name, reason);
          outcome_.note(ExitCode::bad_input);
          if (has_page()) {
              page_.add_fault(name, reason);
          }
          if (!options_.evidence.empty()) {
              faults_.push_back({name, reason});
          }
      }),
      checker_(options, stores_),
      colour_(Console::output_has_colour() ? Colour::ansi : Colour::plain) {}

ExitCode Run::run() {
    if (!has_sound_configuration(fault_)) {
        return ExitCode::bad_input;
    }
    try {
        read_stores();
        if (!options_.evidence.empty()) {
            evidence_.emplace(options_, stores_);
        }
        for (const std::string& argument : options_.certificates) {
            check_input(argument);
        }
        check_list();
        write_page();
        write_evidence();
    } catch (const OutputClosed&) {
        console_.complain("", "the output cannot be written");
        outcome_.note(ExitCode::no_output);
    }
    return outcome_.code();
}

void Run::read_stores() {
    read_system_store(options_.root, NORVANE_W("Root"));
    for (const std::string& path : options_.root) {
        require_certificate(path);
    }
    read_system_store(options_.ca, NORVANE_W("CA"));
    for (const std::string& path : options_.certs) {
        add_objects(stores_.certs.emplace_back(make_store()).get(), path, fault_);
    }
    if (!options_.crls.empty()) {
        stores_.crls = make_store();
    }
    for (const std::string& path : options_.crls) {
        add_objects(stores_.crls.get(), path, fault_);
    }
    if (!options_.issuer.empty()) {
        read_issuer();
    }
}

/// The platform reads the store. What it passes over is told of the stores that the options name;
/// what it cannot open a store for is told of all.
void Run::read_system_store(const std::vector<std::string>& paths, const WCHAR* name) {
    for (const std::string& path : paths) {
        try {
            static_cast<void>(files_at(path));
        } catch (const InputError& error) {
            fault_(path, error.what());
        }
    }
    using Faults = std::vector<std::pair<std::string, std::string>>;
    Faults faults;
    const auto take = [](LPCSTR file, LPCSTR reason, void* argument) -> BOOL {
        static_cast<Faults*>(argument)->emplace_back(file, reason);
        return TRUE;
    };
    const BOOL opens = NorvaneEnumSkippedStoreFiles(name, take, &faults);
    if (opens == FALSE && GetLastError() == ERROR_NOT_ENOUGH_MEMORY) {
        throw std::bad_alloc();
    }
    if (opens == FALSE || !paths.empty()) {
        for (const auto& [file, reason] : faults) {
            fault_(file, reason);
        }
    }
}

/// A trust store that is empty by mistake makes everything a no check, and should not do so in
/// silence.
void Run::require_certificate(const std::string& path) {
    std::size_t count = 0;
    std::size_t faults = 0;
    try {
        for_each_file(
            files_at(path),
            [&](const std::string& /*name*/, const FileContent& content, FileOrigin /*origin*/) {
                const ObjectFile file(content.bytes());
                faults += file.faults().size();
                count += static_cast<std::size_t>(std::ranges::count(
                    file.objects(), ObjectKind::certificate, &ObjectFile::Object::kind));
            },
            [&](const std::string& /*name*/, const std::string& /*reason*/) { ++faults; });
    } catch (const InputError&) {
        return; // This was told already.
    }
    if (count == 0 && faults == 0) {
        fault_(path, "no certificate in it, so that nothing is trusted");
    }
}

void Run::read_issuer() {
    const std::string& name = options_.issuer;
    try {
        const FileContent content = FileContent::of_file(name, FileOrigin::named);
        const ObjectFile file(content.bytes());
        tell_faults(name, file, fault_);
        const auto is_certificate = [](const ObjectFile::Object& object) {
            return object.kind == ObjectKind::certificate;
        };
        const auto count = std::ranges::count_if(file.objects(), is_certificate);
        if (count == 1) {
            stores_.issuer = make_certificate(*std::ranges::find_if(file.objects(), is_certificate),
                                              name, fault_);
        } else if (file.faults().empty()) {
            fault_(name, "holds " + std::to_string(count) + " certificates; a hint is one");
        }
    } catch (const InputError& error) {
        fault_(name, error.what());
    }
}

void Run::check_input(const std::string& argument) {
    try {
        if (argument == standard_input) {
            check_file(argument, FileContent::of_standard_input(), FileOrigin::named);
        } else {
            check_files(argument);
        }
    } catch (const InputError& error) {
        fault_(argument, error.what());
    }
}

/// What is not looked at is named: silence would pass for good.
void Run::check_files(const std::string& path) {
    const InputFiles files =
        files_at(path, options_.recursive ? Descent::recursive : Descent::none);
    const std::size_t before = certificates_;
    for_each_file(
        files,
        [this](const std::string& name, const FileContent& content, FileOrigin origin) {
            check_file(name, content, origin);
        },
        fault_);
    for (const std::string& folder : files.passed_over) {
        console_.complain(folder, options_.recursive ? "a link to a folder is passed over"
                                                     : "passed over; --recursive goes into it");
    }
    if (files.origin == FileOrigin::in_folder && certificates_ == before) {
        fault_(path, "no certificate in the folder");
    }
}

void Run::check_file(const std::string& name, const FileContent& content, FileOrigin origin) {
    const ObjectFile file(content.bytes());
    tell_faults(name, file, fault_);
    bool has_certificate = false;
    for (const ObjectFile::Object& object : file.objects()) {
        if (object.kind != ObjectKind::certificate) {
            continue;
        }
        has_certificate = true;
        ++certificates_;
        std::string each = object_name(name, file, object.number);
        if (auto context = make_certificate(object, each, fault_)) {
            take({std::move(each), std::move(context)});
        }
    }
    if (!has_certificate && file.faults().empty() && origin == FileOrigin::named) {
        fault_(name, "there is no certificate in it, only CRLs");
    }
}

void Run::take(Held certificate) {
    if (options_.grouping == Grouping::list) {
        list_.push_back(std::move(certificate));
        return;
    }
    console_.begin("checking " + certificate.name);
    check({&certificate, 1});
    console_.end();
}

/// All of them in one call.
std::size_t Run::check(std::span<const Held> certificates) {
    std::vector<PCCERT_CONTEXT> contexts;
    std::vector<CheckedCertificate> checked;
    for (const Held& each : certificates) {
        contexts.push_back(each.context.get());
        checked.push_back({each.name, each.context.get()});
    }
    const DecisionRecord record(keeping());
    const auto moment = evidence_ ? evidence_->begin_check(checked) : options_.time;
    const std::vector<Verdict> verdicts = verdicts_of(checker_.check(contexts, moment));
    if (evidence_) {
        evidence_->end_check(record);
    }
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        tell(checked[i], verdicts[i], i + 1 == verdicts.size() ? &record : nullptr);
    }
    return verdicts.size();
}

Keeping Run::keeping() const {
    return options_.explain || evidence_ || has_page() ? Keeping::all_objects
                                                       : Keeping::small_objects;
}

void Run::check_list() {
    if (list_.empty()) {
        return;
    }
    console_.begin("checking " + std::to_string(list_.size()) + " certificates");
    const std::size_t unseen = list_.size() - check(list_);
    console_.end();
    if (unseen == 0) {
        return;
    }
    const std::string note = "not looked at: " + std::to_string(unseen) +
                             (unseen == 1 ? " certificate" : " certificates") +
                             " behind it in the list";
    if (options_.presentation == Presentation::for_people) {
        write("\n" + note + "\n");
    }
    if (has_page()) {
        page_.add_note(note);
    }
}

void Run::tell(const CheckedCertificate& certificate, const Verdict& verdict,
               const DecisionRecord* record) {
    outcome_.note(code_of(verdict.status));
    if (evidence_) {
        evidence_->add_verdict(certificate, verdict, record);
    }
    Account account = account_of(verdict, record);
    account.whole = options_.explain;
    if (has_page()) {
        page_.add(certificate, verdict, account);
    }
    switch (options_.presentation) {
    case Presentation::none:
        break;
    case Presentation::json:
        write(report_as_json(certificate, verdict, account));
        break;
    case Presentation::for_people:
        write((told_ ? "\n" : "") + report_for_people(certificate, verdict, account, colour_));
        told_ = true;
        break;
    }
}

/// A run that could not tell its verdicts has no page either, since that would not be whole.
void Run::write_page() {
    if (!has_page()) {
        return;
    }
    try {
        write_whole_file(options_.report, page_.page(now()));
    } catch (const OutputError& error) {
        console_.complain(options_.report, error.what());
        outcome_.note(ExitCode::no_output);
    }
}

void Run::write_evidence() {
    if (!evidence_) {
        return;
    }
    try {
        evidence_->write(options_.evidence, faults_);
    } catch (const EvidenceNotWritten& fault) {
        console_.complain(options_.evidence, std::string("is not written: ") + fault.what());
        outcome_.note(ExitCode::no_output);
    }
}

void Run::write(const std::string& text) {
    if (!console_.write(text)) {
        throw OutputClosed();
    }
}

} // namespace norvane
