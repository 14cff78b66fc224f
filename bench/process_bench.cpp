// Times whole processes: revcheck with a CRL of a million entries in a file, beside one pass of
// SHA-256 over that file and beside the openssl command, in turn. A program of its own, since a
// child's peak memory begins with that of its parent.

#include "SideBySide.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"
#include "support/TemporaryFolder.h"

#include <openssl/evp.h>

#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace norvane::bench {
namespace {

using namespace testing;

constexpr std::uint32_t entries = 1'000'000;
constexpr int rounds = 11;
constexpr double megabyte = 1e6;
constexpr double milliseconds = 1e3;

void require(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(what);
    }
}

struct Files {
    TemporaryFolder folder;
    std::string root = folder.path() / "root.der";
    std::string leaf = folder.path() / "leaf.der";
    std::string crl = folder.path() / "large.crl";
};

void write_files(const Files& files) {
    const auto write = [&](const std::string& path, const Bytes& bytes) {
        static_cast<void>(
            files.folder.write(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
    };
    const Bytes name = common_name("Root");
    const Bytes key_id(20, 0x11);
    write(files.root,
          CertificateBuilder{.issuer = name,
                             .subject = name,
                             .spki = Key::rsa(0).spki(),
                             .extensions = {basic_constraints(Holder::ca),
                                            key_usage(named_bits({key_cert_sign, crl_sign})),
                                            subject_key_identifier(key_id)}}
              .sign(Key::rsa(0)));
    write(files.leaf, CertificateBuilder{.serial = large_crl_serial(entries),
                                         .issuer = name,
                                         .extensions = {authority_key_identifier(key_id)}}
                          .sign(Key::rsa(0)));
    write(files.crl, large_crl(entries, Key::rsa(0), name));
}

/// Runs something in a child, which must end with 0. Returns the most memory that it had, in bytes.
template <class Work>
double in_child(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(1);
    }
    int status = -1;
    rusage used{};
    require(child > 0 && wait4(child, &status, 0, &used) == child, "no child process");
    require(status == 0, "a process has failed");
    return static_cast<double>(used.ru_maxrss) * 1024;
}

double run(std::vector<std::string> command) {
    return in_child([&] {
        std::vector<char*> arguments;
        for (std::string& argument : command) {
            arguments.push_back(argument.data());
        }
        arguments.push_back(nullptr);
        const int quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, STDOUT_FILENO);
        execvp(arguments.front(), arguments.data());
    });
}

void sha256_of(const std::string& path) {
    const std::size_t size = std::filesystem::file_size(path);
    const int file = open(path.c_str(), O_RDONLY);
    void* const bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
    close(file);
    require(bytes != MAP_FAILED, "the CRL is not mapped");
    unsigned char digest[32];
    require(EVP_Digest(bytes, size, digest, nullptr, EVP_sha256(), nullptr) == 1, "no SHA-256");
    munmap(bytes, size);
}

void measure() {
    const Files files;
    in_child([&] {
        write_files(files);
        _exit(0);
    });
    const double file_size = static_cast<double>(std::filesystem::file_size(files.crl));
    double peak = 0;
    std::vector<double> ours;
    std::vector<double> hash;
    std::vector<double> reference;
    for (int round = 0; round < rounds; ++round) {
        hash.push_back(seconds([&] { sha256_of(files.crl); }, 1));
        ours.push_back(seconds(
            [&] {
                peak = std::max(peak, run({REVCHECK, "--cache-only", "--root", files.root, "--crls",
                                           files.crl, files.leaf}));
            },
            1));
        if (round % 5 == 0) { // It takes seconds.
            reference.push_back(seconds(
                [&] {
                    run({"openssl", "verify", "-crl_check", "-trusted", files.root, "-CRLfile",
                         files.crl, files.leaf});
                },
                1));
        }
    }
    std::printf("a CRL of %u entries, %.1f MB, in whole processes:\n", entries,
                file_size / megabyte);
    std::printf("  revcheck %.1f ms, SHA-256 %.1f ms, openssl verify %.1f ms\n",
                median(ours) * milliseconds, median(hash) * milliseconds,
                median(reference) * milliseconds);
    std::printf("  revcheck over SHA-256      %6.2f  (limit 2.2)\n", median(ours) / median(hash));
    std::printf("  openssl over revcheck      %6.2f  (at least 30)\n",
                median(reference) / median(ours));
    std::printf("  peak memory                %6.1f MB (limit %.1f)\n", peak / megabyte,
                2.2 * file_size / megabyte + 20);
}

} // namespace
} // namespace norvane::bench

int main() {
    try {
        norvane::bench::measure();
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "process_bench: %s\n", fault.what());
        return 1;
    }
    return 0;
}
