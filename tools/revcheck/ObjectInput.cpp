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

} // namespace

InputFiles files_at(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        throw InputError(error && status.type() == fs::file_type::none
                             ? error.message()
                             : "there is no such file or folder");
    }
    if (!fs::is_directory(status)) {
        return {{path}, FileOrigin::named};
    }
    const auto names = names_in_folder(path);
    if (const int* const fault = std::get_if<int>(&names)) {
        throw InputError(std::generic_category().message(*fault));
    }
    InputFiles files{{}, FileOrigin::in_folder};
    for (const std::string& name : std::get<std::vector<std::string>>(names)) {
        const fs::path file = fs::path(path) / name;
        if (!name.starts_with('.') && !fs::is_directory(file, error)) {
            files.paths.push_back(file.string());
        }
    }
    std::ranges::sort(files.paths);
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

void for_each_file(const std::string& path, const FileVisitor& visit, const FaultSink& faults) {
    const auto guarded = [&faults](const std::string& name, const auto& action) {
        try {
            action();
        } catch (const InputError& error) {
            faults(name, error.what());
        }
    };
    guarded(path, [&] {
        const InputFiles files = files_at(path);
        for (const std::string& name : files.paths) {
            guarded(name,
                    [&] { visit(name, FileContent::of_file(name, files.origin), files.origin); });
        }
    });
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
    for_each_file(path, add_all, faults);
}

StoreHolder make_store() {
    StoreHolder store(CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
    if (store == nullptr) {
        throw std::bad_alloc();
    }
    return store;
}

} // namespace norvane
