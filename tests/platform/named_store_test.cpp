#include "platform/FailingNew.h"
#include "platform/FileMaterial.h"
#include "platform/StoreMaterial.h"
#include "support/TemporaryFolder.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sys/resource.h>
#include <thread>

namespace norvane::testing {
namespace {

namespace fs = std::filesystem;
using Encoded = std::vector<Bytes>;

// The configuration of this program: each name is a system store with the folder of that name.
const TemporaryFolder folder;
class Configured : public ::testing::Environment {
  public:
    Configured() {
        std::string text = "[stores]\n";
        for (const std::string name :
             {"Forms", "Faults", "Unreadable", "Changes", "Threads", "Memory"})
            text += name + " = " + (folder.path() / name).string() + "\n";
        setenv("NORVANE_CONFIG", folder.write("norvane.conf", text).c_str(), 1);
    }
};
const auto* const registered = ::testing::AddGlobalTestEnvironment(new Configured);

fs::path write(const std::string& file, const Bytes& content) {
    return folder.write(file, {reinterpret_cast<const char*>(content.data()), content.size()});
}
fs::path write(const std::string& file, const std::string& content) {
    return folder.write(file, content);
}

// The reasons for what was skipped, by file name.
std::multimap<std::string, std::string> skipped(const std::string& name) {
    std::multimap<std::string, std::string> reasons;
    const auto take = [](LPCSTR file, LPCSTR reason, void* out) -> BOOL {
        static_cast<decltype(reasons)*>(out)->emplace(fs::path(file).filename(), reason);
        return TRUE;
    };
    const std::u16string wide(name.begin(), name.end());
    EXPECT_TRUE(NorvaneEnumSkippedStoreFiles(wide.c_str(), take, &reasons));
    return reasons;
}

const Bytes a = certificate("A", hex("01"));
const Bytes b = certificate("B");
const Bytes c = certificate("C");
const Bytes d = certificate("D");
const Bytes list = crl("A");

TEST(NamedStore, ReadsEveryFormInTheOrderOfNamesAndEqualObjectsOnce) {
    write("Forms/1.cer", a);
    write("Forms/2.pem", pem("CERTIFICATE", b) + pem("CERTIFICATE", a) + pem("X509 CRL", list));
    write("Forms/3.p7b", signed_data({context(0, c, a), context(1, list)}));
    write("Forms/.hidden", d);
    write("Forms/inner/6.cer", d);
    const OpenStore store = OpenStore::system(u"fORMS");
    EXPECT_EQ(store.certificates(), (Encoded{a, b, c}));
    EXPECT_EQ(store.crls(), Encoded{list});
    EXPECT_EQ(store.certificates(hex("01")), Encoded{a});
    EXPECT_TRUE(skipped("Forms").empty());
    EXPECT_FALSE(store.add(d));
    EXPECT_EQ(GetLastError(), E_ACCESSDENIED);

    const OpenStore same = OpenStore::system(u"Forms");
    const CertificateContext one(CertEnumCertificatesInStore(store.get(), nullptr));
    const CertificateContext two(CertEnumCertificatesInStore(same.get(), nullptr));
    EXPECT_EQ(one.get(), two.get()) << "what was read is shared";
}

TEST(NamedStore, SkipsFilesAndObjectsThatAreMalformedAndSaysWhy) {
    const Bytes trailing = cat(b, hex("00"));
    write("Faults/bad.cer", trailing);
    write("Faults/good.pem",
          pem("CERTIFICATE", a) + pem("CERTIFICATE", trailing) + pem("CERTIFICATE", b));
    fs::create_symlink("nothing", folder.path() / "Faults/dangling");
    EXPECT_EQ(OpenStore::system(u"Faults").certificates(), (Encoded{a, b}));
    const std::map<std::string, std::string> parts = {
        {"bad.cer", ""}, {"dangling", "No such file"}, {"good.pem", "object 2: "}};
    const auto reasons = skipped("Faults");
    ASSERT_EQ(reasons.size(), parts.size());
    for (const auto& [file, reason] : reasons)
        EXPECT_NE(reason.find(parts.at(file)), std::string::npos) << file << ": " << reason;
}

TEST(NamedStore, IsReadAgainAfterEveryFailureToAllocate) {
    write("Memory/a.pem", pem("CERTIFICATE", a) + pem("CERTIFICATE", b) + pem("X509 CRL", list));
    write("Memory/c.txt", "no object");
    HCERTSTORE opened = nullptr;
    for (long allocations = 0; opened == nullptr; ++allocations) {
        set_allocations_left(allocations);
        opened = CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, 0, u"Memory");
        const DWORD error = GetLastError();
        set_allocations_left(-1);
        ASSERT_TRUE(opened != nullptr || error == ERROR_NOT_ENOUGH_MEMORY) << error;
    }
    const OpenStore store(opened);
    EXPECT_EQ(store.certificates(), (Encoded{a, b}));
    EXPECT_EQ(store.crls(), Encoded{list});
    EXPECT_EQ(skipped("Memory").size(), 1U);
}

// As `CertOpenStore` and `NorvaneEnumSkippedStoreFiles` fail, which tells of one file.
void expect_unreadable(DWORD error, const std::string& file) {
    EXPECT_EQ(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, 0, u"Unreadable"), nullptr);
    EXPECT_EQ(GetLastError(), error);
    std::string told;
    const auto take = [](LPCSTR path, LPCSTR, void* out) -> BOOL {
        *static_cast<std::string*>(out) += fs::path(path).filename();
        return TRUE;
    };
    EXPECT_FALSE(NorvaneEnumSkippedStoreFiles(u"Unreadable", take, &told));
    EXPECT_EQ(GetLastError(), error);
    EXPECT_EQ(told, file);
}

TEST(NamedStore, IsNotShownWithoutAFileThatCannotBeReadAndIsReadAgainAfterwards) {
    write("Unreadable/a.cer", a);
#ifndef __SANITIZE_ADDRESS__ // Sanitizers want descriptors of their own to look at memory.
    static_cast<void>(skipped("Memory")); // The configuration is read while it can be.
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{.rlim_cur = 0, .rlim_max = limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    expect_unreadable(ERROR_TOO_MANY_OPEN_FILES, "Unreadable");
    setrlimit(RLIMIT_NOFILE, &limit);
#endif

    const fs::path loop = folder.path() / "Unreadable/loop";
    fs::create_symlink("loop", loop);
    expect_unreadable(ERROR_READ_FAULT, "loop");
    fs::remove(loop);
    EXPECT_EQ(OpenStore::system(u"Unreadable").certificates(), Encoded{a});
}

// Opens the store until it holds this, for longer than it takes to look at the files again.
::testing::AssertionResult comes_to_hold(const Encoded& expected) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds{10};
    while (OpenStore::system(u"Changes").certificates() != expected) {
        if (std::chrono::steady_clock::now() > end)
            return ::testing::AssertionFailure();
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
    return ::testing::AssertionSuccess();
}

TEST(NamedStore, NoticesFilesThatComeChangeAndGo) {
    EXPECT_TRUE(comes_to_hold({}));
    const fs::path file = write("Changes/a.cer", a);
    EXPECT_TRUE(comes_to_hold({a}));
    const OpenStore before = OpenStore::system(u"Changes");

    Bytes changed = a; // of the same length, in the same file, with the same time
    changed.back() ^= 1;
    const auto time = fs::last_write_time(file);
    write("Changes/a.cer", changed);
    fs::last_write_time(file, time);
    EXPECT_TRUE(comes_to_hold({changed}));

    write("Changes/0.pem", pem("CERTIFICATE", b));
    fs::remove(file);
    EXPECT_TRUE(comes_to_hold({b}));
    fs::remove_all(folder.path() / "Changes");
    EXPECT_TRUE(comes_to_hold({}));
    EXPECT_EQ(before.certificates(), Encoded{a});
}

TEST(NamedStore, ServesThreadsThatOpenSearchAddCloseAndReload) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds{2500};
    write("Threads/a.cer", a);
    const OpenStore shared = OpenStore::memory();
    const OpenStore joined = OpenStore::collection();
    std::atomic<std::size_t> additions = 0;
    const CertificateContext context = certificate_context(a);
    const CrlContext crl =
        crl_context(CrlBuilder{.entries = {{.serial = hex("01")}}}.sign(Key::ec(0)));
    const auto work = [&](int number) {
        for (int round = 0; std::chrono::steady_clock::now() < end; ++round) {
            const OpenStore named = OpenStore::system(u"Threads");
            EXPECT_GE(named.certificates(hex("01")).size(), 1U);
            const bool another = round % 64 == 0;
            EXPECT_TRUE(shared.add(number % 2 == 0 ? b : c,
                                   another ? CERT_STORE_ADD_ALWAYS : CERT_STORE_ADD_USE_EXISTING));
            additions += another ? 1 : 0;
            EXPECT_TRUE(CertAddStoreToCollection(joined.get(), shared.get(), 0, 0));
            EXPECT_GE(joined.certificates().size(), 1U);
            EXPECT_TRUE(OpenStore::memory().add(a));
            CRL_ENTRY* entry = nullptr;
            EXPECT_TRUE(CertFindCertificateInCRL(context.get(), crl.get(), 0, nullptr, &entry));
            EXPECT_NE(entry, nullptr);
            if (number == 0)
                write("Threads/b.cer", round % 2 == 0 ? b : c);
        }
    };
    std::vector<std::jthread> threads;
    for (int number = 0; number < 8; ++number)
        threads.emplace_back(work, number);
    threads.clear();
    EXPECT_EQ(shared.certificates().size(), additions);
}

} // namespace
} // namespace norvane::testing
