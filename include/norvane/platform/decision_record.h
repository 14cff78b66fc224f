#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// How a decision about a certificate comes about, told by the decision itself while it is made:
/// each place that accepts, drops or passes over something says so. A program that wants to know
/// why sets a listener; without one nothing is told and nothing is paid.
///
/// A record is a tree. An event begins a branch, ends the innermost one, or is a step within it.
/// Its code is a word that stays the same from version to version; docs/decision-record.md lists
/// them all.

NORVANE_PLATFORM_BEGIN

// What an event is in the tree.
#define NORVANE_RECORD_STEP 0
#define NORVANE_RECORD_BEGIN 1
#define NORVANE_RECORD_END 2 ///< Its code tells how the branch ended.

// What an object of an event is.
#define NORVANE_RECORD_CERTIFICATE 1
#define NORVANE_RECORD_CRL 2

/// A certificate or a CRL that an event is about.
typedef struct _NORVANE_RECORD_OBJECT {
    LPCSTR pszRole; ///< what it is in the event, a word such as "subject" or "signer"
    DWORD dwKind;
    const BYTE* pbEncoded; ///< DER
    DWORD cbEncoded;       ///< octets
} NORVANE_RECORD_OBJECT;

/// Something that was compared, or that tells more. The text is UTF-8 where it is ours; what comes
/// from certificates and servers is data, and may be any octets but zero.
typedef struct _NORVANE_RECORD_VALUE {
    LPCSTR pszName;
    LPCSTR pszText;
} NORVANE_RECORD_VALUE;

typedef struct _NORVANE_RECORD_EVENT {
    DWORD cbSize;
    DWORD dwKind;
    LPCSTR pszCode;
    LPCSTR pszReference; ///< where the rule stands, as "RFC 5280 5.2.5"; null where none does
    DWORD cObject;
    const NORVANE_RECORD_OBJECT* rgObject;
    DWORD cValue;
    const NORVANE_RECORD_VALUE* rgValue;
} NORVANE_RECORD_EVENT;

/// Is told an event, on the thread that asked. Everything that the event leads to lives until it
/// returns. It must not ask about certificates itself, and throws nothing.
typedef void(WINAPI* PFN_NORVANE_RECORD_LISTENER)(const NORVANE_RECORD_EVENT* pEvent,
                                                  void* pvContext);

/// Sets who is told about the decisions of the calling thread, or nobody (null).
void NorvaneSetRecordListener(PFN_NORVANE_RECORD_LISTENER pfnListener, void* pvContext)
    NORVANE_PLATFORM_API(NorvaneSetRecordListener);

/// Whether anybody listens to the calling thread. For whoever has something to tell.
BOOL NorvaneIsRecordWanted(void) NORVANE_PLATFORM_API(NorvaneIsRecordWanted);

/// Tells an event, and leaves the last error as it is. For revocation modules.
void NorvaneRecordEvent(const NORVANE_RECORD_EVENT* pEvent)
    NORVANE_PLATFORM_API(NorvaneRecordEvent);

NORVANE_PLATFORM_END
