#include "Replay.h"

#include "EvidenceArchive.h"
#include "EvidenceManifest.h"
#include "JsonDifference.h"
#include "ReplayedAnswers.h"
#include "ReplayedSurroundings.h"
#include "Report.h"
#include "Times.h"

#include "platform/UnreadableFile.h"
#include "platform/WholeFile.h"

#include <sstream>
#include <utility>
#include <variant>

namespace norvane {
namespace {

Members read_file(const std::string& path) {
    try {
        const auto outcome = read_whole_file(path, {.max_size = max_archive_octets});
        if (const auto* const fault = std::get_if<FileFault>(&outcome)) {
            throw BadEvidence(fault->text);
        }
        const FileBytes& bytes = std::get<WholeFile>(outcome).bytes;
        return read_archive({bytes.octets.get(), static_cast<std::uint32_t>(bytes.size)});
    } catch (const UnreadableFile& file) {
        throw BadEvidence(std::string("the file cannot be read: ") + file.what());
    }
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(std::move(line) + "\n");
    }
    return lines;
}

/// The options of the run, as far as a check reads them.
Options options_of(const Evidence& evidence) {
    Options options;
    options.cache_only = evidence.options.cache_only;
    options.accumulative = evidence.options.accumulative;
    options.timeout_ms = evidence.options.timeout_ms;
    return options;
}

ULONGLONG milliseconds_of(const FILETIME& time) {
    constexpr ULONGLONG ticks_in_a_millisecond = 10'000;
    return (ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime) / ticks_in_a_millisecond;
}

/// A year. What clocks told is added to the moment of the check, and must stay a date.
constexpr std::int64_t max_check_milliseconds = std::int64_t{366} * 86'400'000;

class Replay {
  public:
    Replay(const Options& presentation, Console& console, const Members& members)
        : presentation_(presentation), console_(console), members_(members),
          evidence_(read_evidence(members)), options_(options_of(evidence_)),
          surroundings_(evidence_, members_), checker_(options_, surroundings_.stores()),
          verdicts_(lines_of(members_.at(std::string(verdicts_name)))),
          records_(lines_of(members_.at(std::string(records_name)))) {}

    ExitCode run() {
        for (const EvidenceCheck& check : evidence_.checks) {
            decide(check);
        }
        if (told_ != verdicts_.size() || told_ != records_.size()) {
            differs("there are " + std::to_string(told_) + " verdicts, not as many as there were");
        }
        return outcome_.code();
    }

  private:
    void decide(const EvidenceCheck& check) {
        const auto moment = parse_time(check.time);
        if (!moment || check.certificates.empty()) {
            throw BadEvidence("manifest.json tells of a check without a time or a certificate");
        }
        for (const EvidenceReading& reading : check.readings) {
            if (reading.milliseconds > max_check_milliseconds ||
                reading.milliseconds < -max_check_milliseconds) {
                throw BadEvidence("manifest.json tells of a check that took longer than any");
            }
        }
        std::vector<CertificateHandle> held;
        std::vector<PCCERT_CONTEXT> contexts;
        for (const EvidenceCertificate& each : check.certificates) {
            held.push_back(surroundings_.certificate(each.object));
            contexts.push_back(held.back().get());
        }
        const DecisionRecord record(Keeping::all_objects);
        const ReplayedAnswers::DifferenceSink sink = [this](const std::string& text) {
            differs(text);
        };
        const ReplayedAnswers answers(check, members_, options_.accumulative,
                                      milliseconds_of(*moment), sink);
        const std::vector<Verdict> verdicts = verdicts_of(checker_.check(contexts, moment));
        for (std::size_t i = 0; i < verdicts.size(); ++i) {
            tell({check.certificates[i].name, contexts[i]}, verdicts[i],
                 i + 1 == verdicts.size() ? &record : nullptr);
        }
        answers.tell_rest();
    }

    void tell(const CheckedCertificate& certificate, const Verdict& verdict,
              const DecisionRecord* record) {
        outcome_.note(code_of(verdict.status));
        Account account = account_of(verdict, record);
        const std::string as_verdict = report_as_json(certificate, verdict, account);
        account.whole = true;
        const std::string as_record = report_as_json(certificate, verdict, account);
        compare(verdicts_name, verdicts_, as_verdict);
        compare(records_name, records_, as_record);
        ++told_;
        if (presentation_.presentation == Presentation::json) {
            write(presentation_.explain ? as_record : as_verdict);
        } else if (presentation_.presentation == Presentation::for_people) {
            account.whole = presentation_.explain;
            const Colour colour = Console::output_has_colour() ? Colour::ansi : Colour::plain;
            write((told_ == 1 ? "" : "\n") +
                  report_for_people(certificate, verdict, account, colour));
        }
    }

    void compare(std::string_view member, const std::vector<std::string>& lines,
                 const std::string& got) {
        const std::string expected = told_ < lines.size() ? lines[told_] : "";
        const std::string place =
            std::string(member) + ", line " + std::to_string(told_ + 1) + ": ";
        for (const std::string& difference : differences_of(expected, got)) {
            differs(place + difference);
        }
    }

    void differs(const std::string& text) {
        outcome_.note(ExitCode::other_replay);
        console_.complain(presentation_.replay, text);
    }

    void write(const std::string& text) {
        if (!console_.write(text)) {
            throw OutputClosed();
        }
    }

    const Options& presentation_;
    Console& console_;
    const Members& members_;
    const Evidence evidence_;
    const Options options_;
    const ReplayedSurroundings surroundings_;
    const Checker checker_;
    const std::vector<std::string> verdicts_;
    const std::vector<std::string> records_;
    std::size_t told_ = 0; ///< verdicts
    Outcome outcome_;
};

} // namespace

ExitCode replay(const Options& options, Console& console) {
    try {
        const Members members = read_file(options.replay);
        return Replay(options, console, members).run();
    } catch (const BadEvidence& fault) {
        console.complain(options.replay, fault.what());
        return ExitCode::bad_input;
    } catch (const ReplayFailure& failure) {
        console.complain(options.replay, failure.what());
        return ExitCode::bad_input;
    } catch (const OutputClosed&) {
        console.complain("", "the output cannot be written");
        return ExitCode::no_output;
    }
}

} // namespace norvane
