#include "EvidenceArchive.h"
#include "EvidenceManifest.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// What is read is what would be written.
void read_text(const std::string& text) {
    require(norvane::manifest_text(norvane::read_manifest(text)) == text);
}

void read_file(norvane::ByteView file) {
    const norvane::Members members = norvane::read_archive(file);
    const norvane::Evidence evidence = norvane::read_evidence(members);
    require(evidence.members.size() + 1 == members.size());
}

} // namespace

/// An archive, or the text of a manifest, which no archive with another digest would let through.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        if (size != 0 && *data == 'P') {
            read_file({data, static_cast<std::uint32_t>(size)});
        } else {
            read_text(std::string(reinterpret_cast<const char*>(data), size));
        }
    } catch (const norvane::BadEvidence&) { // Refused with a reason.
    }
    return 0;
}
