#pragma once

#include <norvane/platform/com.h>

/// The component that judges private key usage periods.

inline constexpr CLSID CLSID_PrivateKeyUsageChecker = {
    0x1FDD1FC3, 0x6347, 0x49DF, {0xBD, 0xAB, 0xE4, 0x65, 0xBF, 0x32, 0xAD, 0x92}};
inline constexpr IID IID_IPrivateKeyUsageChecker = {
    0x59EDB358, 0x096F, 0x4E09, {0x82, 0xE7, 0x4D, 0x3C, 0x87, 0x3E, 0xF5, 0x75}};

#ifdef _WIN32
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // the system's interfaces have public ones
#endif

struct IPrivateKeyUsageChecker : IDispatch {
    /// Whether a date lies in the private key usage period (RFC 3280 4.2.1.4) of a certificate, its
    /// bounds included. It does if the certificate tells none.
    ///
    /// @param certificate of type VT_UI8: the address of a certificate context, of which only the
    ///     encoded bytes are read, and only during the call. It stays the caller's.
    /// @param local_time the date in local time: UTC shifted as `FileTimeToLocalFileTime` does.
    /// @param result VARIANT_TRUE or VARIANT_FALSE; VARIANT_FALSE on failure.
    /// @return `S_OK`, or `E_POINTER` (a null pointer), `DISP_E_TYPEMISMATCH` (another type),
    ///     `E_INVALIDARG` (what is no date), `CRYPT_E_ASN1_CORRUPT` (the certificate or its
    ///     extension is malformed, or the extension stands there twice) or `E_OUTOFMEMORY`.
    virtual HRESULT STDMETHODCALLTYPE Check(VARIANT certificate, DATE local_time,
                                            VARIANT_BOOL* result) = 0;

  protected:
    ~IPrivateKeyUsageChecker() = default;
};

#ifdef _WIN32
#pragma GCC diagnostic pop
#endif
