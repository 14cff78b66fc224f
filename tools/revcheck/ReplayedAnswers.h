#pragma once

#include "Evidence.h"

#include <norvane/wincrypt.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace norvane {

/// Tells the calling thread, for the life of this object, what a check was told when it was made:
/// by retrievals and by clocks. Both answer in their order; of retrievals the next of the same URL,
/// kind and place.
class ReplayedAnswers {
  public:
    /// Takes a way in which the decision asks otherwise than it did, in words.
    using DifferenceSink = std::function<void(const std::string& text)>;

    /// All must outlive this object.
    /// @param moment of the check, from which clocks go on; milliseconds since 1601.
    ReplayedAnswers(const EvidenceCheck& check, const Members& members, bool accumulative,
                    ULONGLONG moment, const DifferenceSink& differences);
    ReplayedAnswers(const ReplayedAnswers&) = delete;
    ReplayedAnswers& operator=(const ReplayedAnswers&) = delete;
    ~ReplayedAnswers();

    /// At the end: tells what was not asked for.
    void tell_rest() const;

  private:
    static void retrieve(LPCSTR url, LPCSTR kind, DWORD flags, DWORD timeout,
                         NORVANE_RETRIEVAL_ANSWER* answer, void* self) noexcept;
    static ULONGLONG read_clock(DWORD clock, ULONGLONG reading, void* self) noexcept;

    void answer(LPCSTR url, bool is_crl, bool cache_only, NORVANE_RETRIEVAL_ANSWER& answer);
    void give(const EvidenceRetrieval& retrieval, NORVANE_RETRIEVAL_ANSWER& answer);
    ULONGLONG next_reading(DWORD clock);

    const EvidenceCheck& check_;
    const Members& members_;
    const bool accumulative_;
    const ULONGLONG moment_;
    const DifferenceSink& differences_;
    std::vector<bool> given_;            ///< of each retrieval, whether it was asked for
    std::size_t readings_ = 0;           ///< that were asked for
    std::vector<CRYPT_DATA_BLOB> blobs_; ///< of the last answer
};

} // namespace norvane
