#pragma once

#include "values/CAtlException.h"

#include <norvane/wincrypt.h>

#include <array>
#include <cstdint>
#include <vector>

namespace norvane {

/// CryptEnumProvidersA or CryptEnumProviderTypesA.
using EnumerateByIndex = BOOL(WINAPI*)(DWORD index, DWORD* reserved, DWORD flags, DWORD* type,
                                       LPSTR name, DWORD* name_size);

/// Room for one name, in ASCII as the platform tells it and in wide characters. It begins inside
/// the object and moves to the heap when it has to grow. There are two buffers because a text must
/// not be converted onto itself.
template <class Wide, DWORD inner_size>
class NameBuffer {
  public:
    NameBuffer() = default;
    NameBuffer(const NameBuffer&) = delete;
    NameBuffer& operator=(const NameBuffer&) = delete;

    /// In bytes of the ASCII name.
    [[nodiscard]] DWORD size() const noexcept { return size_; }
    [[nodiscard]] char* ascii() noexcept { return ascii_; }
    [[nodiscard]] const Wide* wide() const noexcept { return wide_; }

    /// The content is lost.
    void grow(DWORD size) {
        heap_ascii_.resize(size);
        heap_wide_.resize(size);
        ascii_ = heap_ascii_.data();
        wide_ = heap_wide_.data();
        size_ = size;
    }

    /// Fills wide() from ascii(). False with the last error set if that cannot be done.
    [[nodiscard]] bool widen() noexcept {
        constexpr int zero_terminated = -1;
        return MultiByteToWideChar(CP_ACP, 0, ascii_, zero_terminated, wide_,
                                   static_cast<int>(size_)) != 0;
    }

  private:
    std::array<char, inner_size> inner_ascii_{};
    std::array<Wide, inner_size> inner_wide_{};
    std::vector<char> heap_ascii_;
    std::vector<Wide> heap_wide_;
    char* ascii_ = inner_ascii_.data();
    Wide* wide_ = inner_wide_.data();
    DWORD size_ = inner_size;
};

/// Walks an enumeration until `on_item(type, wide name)` gives false or there are no more items.
/// When the name does not fit, the same index is asked for once more with twice the room that is
/// needed.
///
/// Returns 0, or the status of the error that ended the walk.
template <class Wide, DWORD inner_size, class OnItem>
[[nodiscard]] std::uint32_t walk_by_index(EnumerateByIndex enumerate,
                                          NameBuffer<Wide, inner_size>& name, OnItem&& on_item) {
    bool is_retry = false;
    for (DWORD index = 0;;) {
        DWORD type = 0;
        DWORD needed = name.size();
        if (enumerate(index, nullptr, 0, &type, name.ascii(), &needed) != FALSE) {
            if (!name.widen()) {
                return status_from_error(GetLastError());
            }
            if (!on_item(type, name.wide())) {
                return 0;
            }
            is_retry = false;
            ++index;
            continue;
        }
        const DWORD error = GetLastError();
        if (error == ERROR_NO_MORE_ITEMS) {
            return 0;
        }
        if (is_retry || error != ERROR_MORE_DATA) {
            return status_from_error(error);
        }
        if (needed <= name.size()) {
            return status_from_error(ERROR_MORE_DATA);
        }
        name.grow(needed * 2);
        is_retry = true;
    }
}

/// Walks the types of providers.
template <class Wide>
class CCryptProviderTypesEnumT {
  public:
    /// False ends the walk.
    virtual bool on_provider_type(DWORD type, const Wide* name) = 0;
    virtual ~CCryptProviderTypesEnumT() = default;

    explicit CCryptProviderTypesEnumT(EnumerateByIndex enumerate = CryptEnumProviderTypesA) noexcept
        : enumerate_(enumerate) {}

    /// Returns 0, or the status of the error that ended the walk. What the callback throws passes.
    std::uint32_t walk() {
        return walk_by_index(enumerate_, name_, [this](DWORD type, const Wide* name) {
            return on_provider_type(type, name);
        });
    }

  private:
    static constexpr DWORD inner_size = 256;

    EnumerateByIndex enumerate_;
    NameBuffer<Wide, inner_size> name_;
};

/// Walks the installed providers.
template <class Wide>
class CCryptProvidersEnumT {
  public:
    /// False ends the walk.
    virtual bool on_provider(const Wide* name, DWORD type) = 0;
    virtual ~CCryptProvidersEnumT() = default;

    explicit CCryptProvidersEnumT(EnumerateByIndex enumerate = CryptEnumProvidersA) noexcept
        : enumerate_(enumerate) {}

    /// Returns 0, or the status of the error that ended the walk. What the callback throws passes.
    std::uint32_t walk() {
        return walk_by_index(enumerate_, name_, [this](DWORD type, const Wide* name) {
            return on_provider(name, type);
        });
    }

  private:
    static constexpr DWORD inner_size = 512;

    EnumerateByIndex enumerate_;
    NameBuffer<Wide, inner_size> name_;
};

} // namespace norvane
