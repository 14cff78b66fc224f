// A platform that does what the test says, in the place of the real one: its functions for tables
// of algorithms and for providers are linked instead. It keeps a log, and counts what is open.
#pragma once

#include <norvane/wincrypt.h>

#include <map>
#include <string>
#include <vector>

namespace norvane::fake {

struct Provider {
    DWORD type;
    std::string name;
    std::vector<ALG_ID> algorithms;
};

struct Oid {
    DWORD group;
    std::string oid;
    ALG_ID algorithm;
    std::vector<DWORD> extra = {}; // of signatures: the key's algorithm, flags, type of provider
};

struct Platform {
    std::vector<Provider> providers; // the first of a type is its default
    std::vector<Oid> oids;
    // Functions that fail, by name without "Crypt", with their last error. "Acquire <name>" and
    // "Param <name>" stand for those of one provider.
    std::map<std::string, DWORD> failures;
    BOOL verdict = TRUE;

    std::vector<std::string> log;
    int open = 0; // references to providers, hashes and keys

    // What the last import and the last verification were given.
    std::string key_oid;
    std::vector<BYTE> parameters;
    std::vector<BYTE> key;
    DWORD unused_bits = 99;
    std::vector<BYTE> hashed;
    std::vector<BYTE> signature;
};

// The platform of this test. Each test begins with a new one.
Platform& platform();
void reset();

} // namespace norvane::fake
