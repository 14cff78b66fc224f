#pragma once

namespace norvane {

inline constexpr const char* program_version = "revcheck " REVCHECK_VERSION;
inline constexpr const char* version_text = "revcheck " REVCHECK_VERSION "\n";

inline constexpr const char* help_text =
    R"(Usage: revcheck [OPTION...] CERT...
       revcheck replay FILE [--json] [--explain] [-q]

Tells whether certificates are revoked, and what that verdict rests on.

CERT is a file in PEM or DER, or a folder of such files; - is standard input. Of a
file with several certificates each is checked.
  -r, --recursive   go into the folders within a folder, too

Examples:
  revcheck server.pem
      with the stores of this system; CRLs come from the network where needed
  revcheck --root root.pem --ca issuing-ca.pem --crls issuing-ca.crl server.pem
      with these files alone in place of the system's stores
  openssl s_client -connect host:443 -showcerts </dev/null | revcheck -
      what a server shows

Where to look (PATH is a file in PEM, DER or PKCS #7, or a folder of such files;
each may be given several times):
  --root PATH       trusted roots, in place of the system store Root
  --ca PATH         certificates of CAs and their CRLs, in place of the system store CA
  --certs PATH      certificates of CAs besides: a store of its own for each
  --crls PATH       CRLs, in place of those in the store CA
  --issuer FILE     a certificate of the issuer, as a hint

How to check:
  --time TIME       as of TIME: 2026-01-31T09:30:00Z, with an offset such as +03:00 in
                    place of Z, a date alone (UTC), or @SECONDS since 1970
  --cache-only      no network: stores and what earlier retrievals have left
  --timeout MS      milliseconds for one retrieval (5000); 0 for the configured limit
  --accumulative    the time-out is for all retrievals of CRLs for a certificate together,
                    with --list for those of the whole list; 0 then means none at all.
                    Each retrieval of an issuer's certificate may take all that time
  --cache-dir DIR   where retrieved CRLs and certificates are kept
  --strict-pkup     private key usage periods must be kept
  --config FILE     a configuration file, in place of the one NORVANE_CONFIG names
  --list            all certificates in one call, which ends at the first not good

What to keep:
  --evidence FILE   a ZIP archive of all that the verdicts rest on, for later
  replay FILE       decides again from such an archive alone, as of the moment of its
                    check, and tells what comes out otherwise

What to show:
  --json            one object a line for each certificate, as soon as it is decided
  --explain         how each verdict came about, step by step; with --json as data
  --report FILE     a page in HTML that tells all of this, drawn, besides what else is shown
  -q, --quiet       no verdicts, the exit code alone; what cannot be read is still told
  -h, --help        this text
  --version         the version

Exit code:
  0  all certificates are good
  1  one is revoked
  2  for one a check was not possible, and none is revoked
  3  a replay has come to something else
  64 the command line cannot be followed
  65 an input cannot be read or is malformed, while all others have been checked; or
     the configuration is, or the evidence to replay, and nothing has been checked
  71 there is not enough memory
  74 the output, the page of --report or the evidence cannot be written
Where several apply, the first of 64, 71, 74, 65, 3, 1, 2 and 0 counts.
)";

} // namespace norvane
