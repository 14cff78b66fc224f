#pragma once

#ifndef __cplusplus
#error "The interfaces of COM are declared for C++ only."
#endif

/// Components: objects from libraries that are found by a CLSID and used through interfaces. For
/// C++ only, and not part of <norvane/wincrypt.h>.
///
/// On Linux a component is a shared library that section [com] of the configuration names beside
/// its CLSID, and that exports `DllGetClassObject` under this plain name. It is loaded into the
/// process when it is first needed and stays. An interface is an abstract class with the methods in
/// the platform's order and nothing else in its table; no exception leaves a method.

#ifdef _WIN32

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#else

#include <norvane/platform/clock.h>
#include <norvane/platform/error_codes.h>
#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>
#include <norvane/platform/variant.h>

#define STDMETHODCALLTYPE
#define STDAPI extern "C" __attribute__((visibility("default"))) HRESULT

typedef GUID IID;
typedef GUID CLSID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;

typedef DWORD LCID;
typedef LONG DISPID;
typedef WCHAR* LPOLESTR;

inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory = {
    0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDispatch = {0x00020400, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// What every object can do. `QueryInterface` gives a reference that the caller releases; the count
/// that `AddRef` and `Release` return is for tests only.
struct IUnknown {
    virtual HRESULT QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

  protected:
    ~IUnknown() = default; // `Release` destroys; a virtual destructor would stand in the table
};

struct ITypeInfo;
struct DISPPARAMS;
struct EXCEPINFO;

/// Access to an object's methods by name. Here it only has its place in the tables of interfaces
/// that build on it.
struct IDispatch : IUnknown {
    virtual HRESULT GetTypeInfoCount(UINT* pctinfo) = 0;
    virtual HRESULT GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                  DISPID* rgDispId) = 0;
    virtual HRESULT Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                           DISPPARAMS* pDispParams, VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                           UINT* puArgErr) = 0;

  protected:
    ~IDispatch() = default;
};

/// Makes the objects of one class.
struct IClassFactory : IUnknown {
    virtual HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) = 0;
    virtual HRESULT LockServer(BOOL fLock) = 0;

  protected:
    ~IClassFactory() = default;
};

/// What a component exports: gives the class factory of one of its classes.
///
/// @param riid mostly `IID_IClassFactory`.
/// @param ppv receives the interface, to be released by the caller; null on failure.
/// @return `S_OK`, `E_POINTER`, `CLASS_E_CLASSNOTAVAILABLE` or `E_NOINTERFACE`.
STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv);

/// How a thread enters COM: one of the modes, and hints that make no difference here.
#define COINIT_MULTITHREADED 0x0U
#define COINIT_APARTMENTTHREADED 0x2U
#define COINIT_DISABLE_OLE1DDE 0x4U
#define COINIT_SPEED_OVER_MEMORY 0x8U

/// Where the code of an object may run. Linux has in-process servers only.
#define CLSCTX_INPROC_SERVER 0x1U
#define CLSCTX_INPROC_HANDLER 0x2U
#define CLSCTX_LOCAL_SERVER 0x4U
#define CLSCTX_REMOTE_SERVER 0x10U
#define CLSCTX_ALL                                                                                 \
    (CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER)

NORVANE_PLATFORM_BEGIN

/// Enters COM on the calling thread. Each success, `S_FALSE` too, is to be matched by one
/// `CoUninitialize`. The mode is kept but makes no difference to objects, which run on the thread
/// that calls them.
///
/// @param pvReserved null.
/// @param dwCoInit one of the modes above, with or without the hints.
/// @return `S_OK` for the first, `S_FALSE` if the thread has entered already, `RPC_E_CHANGED_MODE`
///     if it has in another mode, `E_INVALIDARG`.
HRESULT CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit) NORVANE_PLATFORM_API(CoInitializeEx);

/// Leaves COM on the calling thread. Does nothing on a thread that is not in it.
void CoUninitialize(void) NORVANE_PLATFORM_API(CoUninitialize);

/// Makes an object.
///
/// @param rclsid its class, which the configuration knows.
/// @param pUnkOuter the object that it shall be part of, mostly null; the class decides.
/// @param dwClsContext where it may run, `CLSCTX_INPROC_SERVER` among others.
/// @param riid the interface that is wanted.
/// @param ppv receives the interface, to be released by the caller; null on failure.
/// @return `S_OK`, or the component's own failure such as `E_NOINTERFACE`, or `E_POINTER`,
///     `CO_E_NOTINITIALIZED` (the thread has not entered COM), `REGDB_E_CLASSNOTREG` (the
///     configuration does not know the class, or it may not run in the process),
///     `CO_E_DLLNOTFOUND` (there is no such library), `E_UNEXPECTED` (it cannot be loaded),
///     `CO_E_ERRORINDLL` (it lacks the export) or `E_OUTOFMEMORY`.
HRESULT CoCreateInstance(REFCLSID rclsid, IUnknown* pUnkOuter, DWORD dwClsContext, REFIID riid,
                         LPVOID* ppv) NORVANE_PLATFORM_API(CoCreateInstance);

NORVANE_PLATFORM_END

#endif
