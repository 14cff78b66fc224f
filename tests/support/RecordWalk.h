// A listener that reads all of every event, as long as this object lives.
#pragma once

#include <norvane/wincrypt.h>

#include <cstddef>
#include <cstdlib>
#include <set>
#include <string>

namespace norvane::testing {

class RecordWalk {
  public:
    RecordWalk() { NorvaneSetRecordListener(&RecordWalk::hear, this); }
    RecordWalk(const RecordWalk&) = delete;
    RecordWalk& operator=(const RecordWalk&) = delete;
    ~RecordWalk() { NorvaneSetRecordListener(nullptr, nullptr); }

    [[nodiscard]] std::size_t events() const { return events_; }
    [[nodiscard]] std::size_t open_branches() const { return open_; }
    [[nodiscard]] bool has(const std::string& code) const { return codes_.contains(code); }
    // How the last of the outermost branches ended.
    [[nodiscard]] const std::string& outcome() const { return outcome_; }

  private:
    static void require(bool condition) {
        if (!condition)
            std::abort();
    }

    static void hear(const NORVANE_RECORD_EVENT* event, void* context) {
        auto& self = *static_cast<RecordWalk*>(context);
        require(event->cbSize == sizeof *event && *event->pszCode != '\0');
        ++self.events_;
        self.codes_.insert(event->pszCode);
        if (event->pszReference != nullptr)
            self.read(event->pszReference);
        for (DWORD i = 0; i < event->cValue; ++i) {
            self.read(event->rgValue[i].pszName);
            self.read(event->rgValue[i].pszText);
        }
        for (DWORD i = 0; i < event->cObject; ++i) {
            const NORVANE_RECORD_OBJECT& object = event->rgObject[i];
            require(object.dwKind == NORVANE_RECORD_CERTIFICATE ||
                    object.dwKind == NORVANE_RECORD_CRL);
            self.read(object.pszRole);
            for (DWORD octet = 0; octet < object.cbEncoded; ++octet)
                self.read_ = self.read_ + object.pbEncoded[octet];
        }
        if (event->dwKind == NORVANE_RECORD_BEGIN)
            ++self.open_;
        if (event->dwKind == NORVANE_RECORD_END) {
            require(self.open_-- != 0);
            if (self.open_ == 0)
                self.outcome_ = event->pszCode;
        }
    }

    void read(const char* text) { read_ = read_ + std::string(text).size(); }

    std::size_t events_ = 0;
    std::size_t open_ = 0;
    volatile std::size_t read_ = 0;
    std::set<std::string> codes_;
    std::string outcome_;
};

} // namespace norvane::testing
