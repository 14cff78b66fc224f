#include "ObjectInput.h"

#include "asn1/Certificate.h"
#include "asn1/CertificateList.h"
#include "asn1/ControlClass.h"
#include "platform/config/FolderNames.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>
#include <variant>

namespace norvane {
namespace {

namespace fs = std::filesystem;

/// What the runtime has to say about bytes that the platform does not take as a `Tree`.
template <class Tree>
std::string decoding_fault(ByteView bytes) {
    if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) {
        throw std::bad_alloc();
    }
    ASN1BERDecodeBuffer buffer(bytes.data, bytes.length);
    Tree tree;
    ASN1C<Tree> control(buffer, tree);
    return control.DecodeFrom(buffer) < 0 ? rtErrGetText(buffer.getCtxt()) : "a time in it is none";
}

void add_object(HCERTSTORE store, const ObjectFile::Object& object, const std::string& name,
                const FaultSink& faults) {
    const bool certificate = object.kind == ObjectKind::certificate;
    const auto add =
        certificate
            ? +[](HCERTSTORE to, const BYTE* data, DWORD length) {
                  return CertAddEncodedCertificateToStore(to, X509_ASN_ENCODING, data, length,
                                                          CERT_STORE_ADD_USE_EXISTING, nullptr);
              }
            : +[](HCERTSTORE to, const BYTE* data, DWORD length) {
                  return CertAddEncodedCRLToStore(to, X509_ASN_ENCODING, data, length,
                                                  CERT_STORE_ADD_USE_EXISTING, nullptr);
              };
    if (add(store, object.bytes.data, object.bytes.length) == FALSE) {
        faults(name, certificate ? decoding_fault<ASN1T_Certificate>(object.bytes)
                                 : decoding_fault<ASN1T_CertificateList>(object.bytes));
    }
}

/// The names in a folder, sorted, without those that begin with a dot. Throws InputError.
std::vector<std::string> visible_names_in(const std::string& folder) {
    auto outcome = names_in_folder(folder);
    if (const int* const fault = std::get_if<int>(&outcome)) {
        throw InputError(std::generic_category().message(*fault));
    }
    auto& names = std::get<std::vector<std::string>>(outcome);
    std::erase_if(names, [](const std::string& name) { return name.starts_with('.'); });
    std::ranges::sort(names);
    return std::move(names);
}

void add_files_of_folder(const std::string& folder, Descent descent, InputFiles& files) {
    for (const std::string& name : visible_names_in(folder)) {
        const std::string path = (fs::path(folder) / name).string();
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            files.paths.push_back(path);
        } else if (descent == Descent::none || fs::is_symlink(path, error)) {
            files.passed_over.push_back(path);
        } else {
            add_files_of_folder(path, descent, files);
        }
    }
}

} // namespace

InputFiles files_at(const std::string& path, Descent descent) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        throw InputError(error && status.type() == fs::file_type::none
                             ? error.message()
                             : "there is no such file or folder");
    }
    if (!fs::is_directory(status)) {
        return {.paths = {path}};
    }
    InputFiles files{.origin = FileOrigin::in_folder};
    add_files_of_folder(path, descent, files);
    return files;
}

std::string object_name(const std::string& input, const ObjectFile& file, std::uint32_t number) {
    const bool several = file.objects().size() + file.faults().size() > 1;
    return several && number != 0 ? input + "#" + std::to_string(number) : input;
}

void tell_faults(const std::string& input, const ObjectFile& file, const FaultSink& faults) {
    for (const ObjectFile::Fault& fault : file.faults()) {
        faults(object_name(input, file, fault.number), fault.text);
    }
}

CertificateHandle make_certificate(const ObjectFile::Object& object, const std::string& name,
                                   const FaultSink& faults) {
    CertificateHandle certificate(
        CertCreateCertificateContext(X509_ASN_ENCODING, object.bytes.data, object.bytes.length));
    if (certificate == nullptr) {
        faults(name, decoding_fault<ASN1T_Certificate>(object.bytes));
    }
    return certificate;
}

void for_each_file(const InputFiles& files, const FileVisitor& visit, const FaultSink& faults) {
    for (const std::string& name : files.paths) {
        try {
            visit(name, FileContent::of_file(name, files.origin), files.origin);
        } catch (const InputError& error) {
            faults(name, error.what());
        }
    }
}

void add_objects(HCERTSTORE store, const std::string& path, const FaultSink& faults) {
    const auto add_all = [&](const std::string& name, const FileContent& content,
                             FileOrigin /*origin*/) {
        const ObjectFile file(content.bytes());
        tell_faults(name, file, faults);
        for (const ObjectFile::Object& object : file.objects()) {
            add_object(store, object, object_name(name, file, object.number), faults);
        }
    };
    try {
        for_each_file(files_at(path), add_all, faults);
    } catch (const InputError& error) {
        faults(path, error.what());
    }
}

StoreHolder make_store() {
    StoreHolder store(CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
    if (store == nullptr) {
        throw std::bad_alloc();
    }
    return store;
}

} // namespace norvane
