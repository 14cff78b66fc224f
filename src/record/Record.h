#pragma once

#include "asn1/ByteView.h"
#include "record/Event.h"

#include <array>
#include <concepts>
#include <cstdint>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace norvane {

// What the decision says about itself. Each place that accepts, drops or passes over something has
// a line of its own with what it compared. Texts are made only if somebody listens.

/// The text of a value in a record. A type that is told has a specialisation of this.
template <class T>
struct RecordText;

template <>
struct RecordText<std::string> {
    static std::string of(const std::string& text) { return text; }
};

template <>
struct RecordText<std::string_view> {
    static std::string of(std::string_view text) { return std::string(text); }
};

/// In decimal.
template <std::unsigned_integral T>
struct RecordText<T> {
    static std::string of(T number) { return std::to_string(number); }
};

template <class T>
struct RecordText<std::optional<T>> {
    static std::string of(const std::optional<T>& value) {
        return value ? RecordText<T>::of(*value) : "absent";
    }
};

/// An object or a value of an event. It only refers to what it tells of.
struct RecordPart {
    enum class Kind : std::uint8_t { certificate, crl, value };

    Kind kind = Kind::value;
    const char* name = nullptr; ///< the role of an object, or the name of a value
    ByteView encoded;           ///< of an object
    std::string (*text_of)(const void* value) = nullptr;
    const void* value = nullptr;
};

/// A value by its name in the RFC, or in the configuration.
template <class T>
[[nodiscard]] RecordPart record_value(const char* name, const T& value) noexcept {
    return {RecordPart::Kind::value,
            name,
            {},
            [](const void* told) { return RecordText<T>::of(*static_cast<const T*>(told)); },
            &value};
}

enum class RecordKind : std::uint8_t { step, begin, end };

/// Whether somebody listens to the calling thread.
[[nodiscard]] bool record_is_wanted() noexcept;

/// Tells an event. What fails in that costs the parts of the event, never the decision.
void send_event(RecordKind kind, const Event& event, std::span<const RecordPart> parts) noexcept;

template <class... Parts>
void send_parts(RecordKind kind, const Event& event, const Parts&... parts) noexcept {
    const std::array<RecordPart, sizeof...(Parts)> all{parts...};
    send_event(kind, event, all);
}

/// A step of the decision.
template <class... Parts>
void note(const Event& event, const Parts&... parts) noexcept {
    if (record_is_wanted()) [[unlikely]] {
        send_parts(RecordKind::step, event, parts...);
    }
}

/// note for a test that something has failed: `return holds(x) || fails(event::..., told(x));`
template <class... Parts>
[[nodiscard]] bool fails(const Event& event, const Parts&... parts) noexcept {
    note(event, parts...);
    return false;
}

/// A branch of the record, from its beginning to the end of the scope at the latest.
class Branch {
  public:
    template <class... Parts>
    explicit Branch(const Event& event, const Parts&... parts) noexcept
        : is_open_(record_is_wanted()) {
        if (is_open_) [[unlikely]] {
            exceptions_ = std::uncaught_exceptions();
            send_parts(RecordKind::begin, event, parts...);
        }
    }
    Branch(const Branch&) = delete;
    Branch& operator=(const Branch&) = delete;
    ~Branch() {
        if (is_open_) [[unlikely]] {
            end(std::uncaught_exceptions() > exceptions_ ? event::abandoned : event::ended);
        }
    }

    /// Ends the branch, and tells how.
    template <class... Parts>
    void end(const Event& outcome, const Parts&... parts) noexcept {
        if (is_open_) [[unlikely]] {
            send_parts(RecordKind::end, outcome, parts...);
            is_open_ = false;
        }
    }

    /// end with parts whose number is only known when they are told.
    void end_with(const Event& outcome, std::span<const RecordPart> parts) noexcept {
        if (is_open_) [[unlikely]] {
            send_event(RecordKind::end, outcome, parts);
            is_open_ = false;
        }
    }

    [[nodiscard]] bool is_open() const noexcept { return is_open_; }

    /// end with one of two outcomes, and gives the answer that decides which.
    [[nodiscard]] bool ends(bool holds, const Event& if_it_holds, const Event& if_not) noexcept {
        end(holds ? if_it_holds : if_not);
        return holds;
    }

  private:
    bool is_open_;
    int exceptions_ = 0;
};

} // namespace norvane
