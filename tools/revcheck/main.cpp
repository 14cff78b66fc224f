#include "CertificateFile.h"
#include "Report.h"

#include "values/Exceptions.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace norvane {
namespace {

enum ExitCode { no_check = 2, usage_error = 64, input_error = 65 };

/// The files named, and in place of a folder those in it, in the order of their names.
std::vector<std::filesystem::path> list_files(const std::vector<std::string>& arguments) {
    std::vector<std::filesystem::path> files;
    for (const std::string& argument : arguments) {
        if (!std::filesystem::is_directory(argument)) {
            files.emplace_back(argument);
            continue;
        }
        const auto first = static_cast<std::ptrdiff_t>(files.size());
        for (const auto& entry : std::filesystem::directory_iterator(argument)) {
            const std::filesystem::path extension = entry.path().extension();
            if (extension == ".pem" || extension == ".der" || extension == ".crt" ||
                extension == ".cer") {
                files.push_back(entry.path());
            }
        }
        std::sort(files.begin() + first, files.end());
    }
    return files;
}

/// Throws FileError with what is wrong in the bytes and where.
void require_certificate(const std::filesystem::path& path, const CACMPT_BLOB& encoded) {
    ASN1BERDecodeBuffer buffer(encoded.data, encoded.length);
    ASN1T_Certificate certificate;
    ASN1C_Certificate control(buffer, certificate);
    if (control.DecodeFrom(buffer) < 0) {
        throw FileError(path.string() + ": not a certificate; " + rtErrGetText(buffer.getCtxt()));
    }
}

/// Reports each certificate of the file; a fault costs the rest of this file only.
bool report_file(const std::filesystem::path& path) {
    try {
        for (const CACMPT_BLOB& encoded : read_certificates(path)) {
            require_certificate(path, encoded);
            std::ostringstream text; // A fault leaves no half of a report.
            report(text, path.string(), CertificateItem(encoded));
            std::cout << text.str();
        }
        return true;
    } catch (const FileError& error) {
        std::cerr << "revcheck: " << error.what() << '\n';
    } catch (const CAException& error) {
        std::cerr << "revcheck: " << path.string() << ": " << error.what() << '\n';
    }
    return false;
}

int run(const std::vector<std::string>& arguments) {
    if (arguments.empty() || arguments.front().starts_with("--")) {
        std::cerr << "usage: revcheck CERT...\n"
                     "CERT is a certificate file, PEM or DER, or a folder of such files.\n";
        return usage_error;
    }
    const std::vector<std::filesystem::path> files = list_files(arguments);
    if (files.empty()) {
        std::cerr << "revcheck: there are no certificate files in the folders given\n";
        return input_error;
    }
    bool all_read = true;
    for (const std::filesystem::path& file : files) {
        all_read = report_file(file) && all_read;
    }
    return all_read ? no_check : input_error;
}

} // namespace
} // namespace norvane

int main(int argc, char** argv) {
    try {
        return norvane::run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "revcheck: " << error.what() << '\n';
        return norvane::input_error;
    }
}
