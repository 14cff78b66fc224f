#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace norvane {

/// Names of the source modules as they stand in exception texts. They are fixed words of the
/// program's diagnostics and need not match the file that throws.
namespace source_module {
inline constexpr std::string_view chain = "Chain";
inline constexpr std::string_view chain_validator = "ChainValidator";
inline constexpr std::string_view chain_base = "ChainBase";
inline constexpr std::string_view store_util = "StoreUtil";
inline constexpr std::string_view date = "Date";
inline constexpr std::string_view asn1_util = "ASN1Util";
inline constexpr std::string_view asn1_traits = "ASN1Traits";
inline constexpr std::string_view asn1_types = "ASN1Types";
inline constexpr std::string_view asn1_types_impl = "ASN1TypesImpl";
inline constexpr std::string_view asn1_blob = "ASN1Blob";
inline constexpr std::string_view encode_and = "EncodeAnd";
} // namespace source_module

/// The text of every exception of the family:
/// Exception :'<message>' at file:'<file>' line:<line>
[[nodiscard]] std::string make_exception_text(std::string_view message, std::string_view file,
                                              std::uint32_t line);

/// The text for a platform error number (a GetLastError value or an HRESULT), in code page 1251:
/// the number, and the system's description as it comes, line end included. A number without a
/// description gives the number alone. At most 511 bytes.
[[nodiscard]] std::string format_error_code(std::uint32_t code);

/// Base of all failures that travel as exceptions; `what` gives the text of make_exception_text.
/// Building one may throw std::bad_alloc instead.
class CAException : public std::runtime_error {
  public:
    /// `file` is one of the names in source_module, `line` the line of the throw site.
    CAException(std::string_view message, std::string_view file, std::uint32_t line);

    [[nodiscard]] const std::string& file() const noexcept { return file_; }
    [[nodiscard]] std::uint32_t line() const noexcept { return line_; }

  private:
    std::string file_;
    std::uint32_t line_;
};

/// A certificate or CRL breaks a rule of the profile.
class CAValidateException : public CAException {
  public:
    using CAException::CAException;
};

/// The ASN.1 runtime failed to encode or decode.
class Asn1Exception : public CAException {
  public:
    using CAException::CAException;
};

/// The data decoded, but has a form that is refused.
class Asn1DecodeException : public Asn1Exception {
  public:
    using Asn1Exception::Asn1Exception;
};

/// A platform call failed; the message is format_error_code of its error number.
class CryptException : public CAException {
  public:
    CryptException(std::uint32_t code, std::string_view file, std::uint32_t line);

    /// The GetLastError value or HRESULT of the failed call.
    [[nodiscard]] std::uint32_t code() const noexcept { return code_; }

  private:
    std::uint32_t code_;
};

/// A calendar time that does not exist.
class date_exception : public CAException {
  public:
    using CAException::CAException;
};

} // namespace norvane
