#pragma once

#include "FileContent.h"

#include "platform/store/ObjectFile.h"

#include <norvane/wincrypt.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace norvane {

struct FreeCertificate {
    void operator()(const CERT_CONTEXT* context) const { CertFreeCertificateContext(context); }
};
struct FreeCrl {
    void operator()(const CRL_CONTEXT* context) const { CertFreeCRLContext(context); }
};
struct CloseStore {
    void operator()(void* store) const { CertCloseStore(store, 0); }
};
using CertificateHandle = std::unique_ptr<const CERT_CONTEXT, FreeCertificate>;
using CrlHandle = std::unique_ptr<const CRL_CONTEXT, FreeCrl>;
using StoreHolder = std::unique_ptr<void, CloseStore>;

/// Takes what of an input could not be taken: its name, and why in words.
using FaultSink = std::function<void(const std::string& name, const std::string& reason)>;

/// Whether folders within a folder are gone into. Links to folders never are.
enum class Descent : std::uint8_t { none, recursive };

struct InputFiles {
    std::vector<std::string> paths = {};
    std::vector<std::string> passed_over = {}; ///< folders within the folder
    FileOrigin origin = FileOrigin::named;
};

/// The path itself, or of a folder the files in it, in the order of their names and without those
/// that begin with a dot. Throws InputError if there is nothing at the path or the folder cannot be
/// read.
[[nodiscard]] InputFiles files_at(const std::string& path, Descent descent = Descent::none);

using FileVisitor =
    std::function<void(const std::string& name, const FileContent& content, FileOrigin origin)>;

/// Visits the files, or tells why one cannot be read, which costs only itself.
void for_each_file(const InputFiles& files, const FileVisitor& visit, const FaultSink& faults);

/// The name of an object of an input: that of the input, and with "#" the number in it where there
/// are several.
[[nodiscard]] std::string object_name(const std::string& input, const ObjectFile& file,
                                      std::uint32_t number);

/// Tells what of the file could not be taken.
void tell_faults(const std::string& input, const ObjectFile& file, const FaultSink& faults);

/// The certificate over the object's bytes; null, with the reason told, if they are none.
[[nodiscard]] CertificateHandle make_certificate(const ObjectFile::Object& object,
                                                 const std::string& name, const FaultSink& faults);

/// Adds all certificates and CRLs at the path, a file or a folder, to the store. What cannot be
/// read is told and costs only itself.
void add_objects(HCERTSTORE store, const std::string& path, const FaultSink& faults);

/// An empty store in memory.
[[nodiscard]] StoreHolder make_store();

} // namespace norvane
