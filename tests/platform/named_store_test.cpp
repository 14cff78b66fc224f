#include "platform/FileMaterial.h"
#include "platform/StoreMaterial.h"
#include "support/TemporaryFolder.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>

namespace norvane::testing {
namespace {

namespace fs = std::filesystem;
using Encoded = std::vector<Bytes>;

// The configuration of this program: each name is a system store with the folder of that name.
class Configured : public ::testing::Environment {
  public:
    static constexpr const char* names[] = {"Root", "Forms", "Faults", "Changes", "Threads"};

    Configured() {
        std::string text = "[stores]\n";
        for (const std::string name : names)
            text += name + " = " + (folder_.path() / name).string() + "\n";
        text += "Nowhere = " + (folder_.path() / "nowhere").string() + "\n";
        text += "File = " + (folder_.path() / "single").string() + ":" +
                (folder_.path() / "Root").string() + "\n";
        setenv("NORVANE_CONFIG", folder_.write("norvane.conf", text).c_str(), 1);
    }
    [[nodiscard]] fs::path path(const std::string& name) const { return folder_.path() / name; }

  private:
    TemporaryFolder folder_;
};

Configured& configured() {
    static auto* const environment = new Configured;
    return *environment;
}
const auto* const registered = ::testing::AddGlobalTestEnvironment(&configured());

void write(const std::string& name, const std::string& file, std::string_view content) {
    fs::create_directories(configured().path(name));
    std::ofstream(configured().path(name) / file, std::ios::binary) << content;
}
void write(const std::string& name, const std::string& file, const Bytes& content) {
    write(name, file,
          std::string_view(reinterpret_cast<const char*>(content.data()), content.size()));
}

std::u16string wide(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

// The reasons for what was skipped, by file name.
std::multimap<std::string, std::string> skipped(const std::string& name) {
    std::multimap<std::string, std::string> reasons;
    const auto take = [](LPCSTR file, LPCSTR reason, void* out) -> BOOL {
        static_cast<decltype(reasons)*>(out)->emplace(fs::path(file).filename(), reason);
        return TRUE;
    };
    EXPECT_TRUE(NorvaneEnumSkippedStoreFiles(wide(name).c_str(), take, &reasons));
    return reasons;
}

const Bytes a = certificate("A", hex("01"));
const Bytes b = certificate("B");
const Bytes c = certificate("C");
const Bytes d = certificate("D");
const Bytes list = crl("A");

TEST(NamedStore, ReadsEveryFormInTheOrderOfNamesAndEqualObjectsOnce) {
    write("Forms", "1.cer", a);
    write("Forms", "2.pem",
          "A comment\n" + pem("CERTIFICATE", b) + "\n" + pem("CERTIFICATE", a) +
              pem("X509 CRL", list));
    write("Forms", "3.p7b", signed_data({c, a}, {list}));
    write("Forms", "4.p7c", pem("PKCS7", signed_data({d}, {})));
    write("Forms", "5.crl", list);
    write("Forms", ".hidden", certificate("hidden"));
    write("Forms/inner", "6.cer", certificate("inner"));
    fs::create_symlink("1.cer", configured().path("Forms") / "7.link");
    const OpenStore store = OpenStore::system(u"Forms");
    EXPECT_EQ(store.certificates(), (Encoded{a, b, c, d}));
    EXPECT_EQ(store.crls(), Encoded{list});
    EXPECT_EQ(store.certificates(hex("01")), Encoded{a});
    EXPECT_TRUE(skipped("Forms").empty());
}

TEST(NamedStore, SkipsFilesAndObjectsThatAreMalformedAndSaysWhy) {
    Bytes trailing = b;
    trailing.push_back(0);
    write("Faults", "bad.cer", trailing);
    write("Faults", "bad.pem", pem("CERTIFICATE", a) + "-----BEGIN CERTIFICATE-----\n");
    write("Faults", "good.pem",
          pem("CERTIFICATE", a) + pem("CERTIFICATE", trailing) + pem("CERTIFICATE", hex("3000")) +
              pem("CERTIFICATE", b));
    write("Faults", "text", "Nothing in here");
    fs::create_symlink("nothing", configured().path("Faults") / "dangling");
    fs::create_symlink("/dev/null", configured().path("Faults") / "device");
    const OpenStore store = OpenStore::system(u"Faults");
    EXPECT_EQ(store.certificates(), (Encoded{a, b}));

    const auto reasons = skipped("Faults");
    const struct {
        const char* file;
        std::vector<std::string> parts;
    } cases[] = {{"bad.cer", {""}},
                 {"bad.pem", {"has no end"}},
                 {"dangling", {"No such file"}},
                 {"device", {"neither a regular file nor a folder"}},
                 {"good.pem", {"object 2: ", "object 3: "}},
                 {"text", {"no certificate and no CRL"}}};
    std::size_t count = 0;
    for (const auto& item : cases) {
        auto found = reasons.lower_bound(item.file);
        for (const std::string& part : item.parts) {
            ASSERT_NE(found, reasons.upper_bound(item.file)) << item.file;
            EXPECT_NE(found->second.find(part), std::string::npos) << found->second;
            ++found;
            ++count;
        }
    }
    EXPECT_EQ(reasons.size(), count);
}

TEST(NamedStore, IsOpenedByAnyCaseOfAConfiguredName) {
    write("Root", "a.cer", a);
    const auto open = [](LPCWSTR name, DWORD flags) {
        SetLastError(0);
        return CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, flags, name);
    };
    constexpr DWORD existing = CERT_STORE_OPEN_EXISTING_FLAG | CERT_SYSTEM_STORE_LOCAL_MACHINE;
    EXPECT_EQ(OpenStore::system(u"rOOT").certificates(), Encoded{a});
    EXPECT_EQ(OpenStore::system(u"File").certificates(), Encoded{a});
    EXPECT_EQ(OpenStore::system(u"Nowhere").certificates(), Encoded{});
    EXPECT_TRUE(skipped("Nowhere").empty());

    EXPECT_EQ(open(u"Other", existing), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(open(u"Root", CERT_STORE_CREATE_NEW_FLAG), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    const OpenStore fresh(open(u"Other", CERT_STORE_CREATE_NEW_FLAG));
    EXPECT_EQ(fresh.certificates(), Encoded{});

    const OpenStore root(open(u"Root", 0));
    for (const OpenStore* store : {&fresh, &root}) {
        EXPECT_FALSE(store->add(b));
        EXPECT_EQ(GetLastError(), E_ACCESSDENIED);
    }
    const auto ignore = [](LPCSTR, LPCSTR, void*) -> BOOL { return TRUE; };
    EXPECT_FALSE(NorvaneEnumSkippedStoreFiles(u"Other", ignore, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(NorvaneEnumSkippedStoreFiles(u"Root", nullptr, nullptr));
    EXPECT_EQ(GetLastError(), E_INVALIDARG);
}

TEST(NamedStore, SharesWhatItHasRead) {
    write("Root", "a.cer", a);
    const CertificateContext loose = certificate_context(a);
    const OpenStore first = OpenStore::system(u"Root");
    const OpenStore second = OpenStore::system(u"Root");
    EXPECT_LT(first.get(), second.get());
    const CertificateContext one(CertEnumCertificatesInStore(first.get(), nullptr));
    const CertificateContext two(CertEnumCertificatesInStore(second.get(), nullptr));
    EXPECT_EQ(one.get(), two.get());
    EXPECT_EQ(one->pCertInfo, loose->pCertInfo);

    const OpenStore content(CertDuplicateStore(one->hCertStore));
    EXPECT_EQ(content.certificates(), Encoded{a});
    EXPECT_FALSE(content.add(b));
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
    write("Changes", "a.cer", a);
    EXPECT_TRUE(comes_to_hold({a}));
    const OpenStore before = OpenStore::system(u"Changes");

    Bytes changed = a; // of the same length, in the same file, with the same time
    changed.back() ^= 1;
    const fs::path file = configured().path("Changes") / "a.cer";
    const auto time = fs::last_write_time(file);
    write("Changes", "a.cer", changed);
    fs::last_write_time(file, time);
    EXPECT_TRUE(comes_to_hold({changed}));

    write("Changes", "0.pem", pem("CERTIFICATE", b));
    fs::remove(file);
    EXPECT_TRUE(comes_to_hold({b}));
    fs::remove_all(configured().path("Changes"));
    EXPECT_TRUE(comes_to_hold({}));
    EXPECT_EQ(before.certificates(), Encoded{a});
}

TEST(NamedStore, ServesThreadsThatOpenSearchAddCloseAndReload) {
    constexpr int thread_count = 8;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds{2500};
    write("Threads", "a.cer", a);
    const OpenStore shared = OpenStore::memory();
    const OpenStore joined = OpenStore::collection();
    const CrlContext crl =
        crl_context(CrlBuilder{.entries = {{.serial = hex("01")}}}.sign(Key::ec(0)));
    std::atomic<int> rounds = 0;
    const auto work = [&](int number) {
        const Bytes own = number % 2 == 0 ? b : c;
        while (std::chrono::steady_clock::now() < end) {
            const OpenStore named = OpenStore::system(u"Threads");
            EXPECT_GE(named.certificates(hex("01")).size(), 1U);
            EXPECT_TRUE(shared.add(own, CERT_STORE_ADD_USE_EXISTING));
            EXPECT_TRUE(shared.add_crl(list, CERT_STORE_ADD_USE_EXISTING));
            EXPECT_TRUE(CertAddStoreToCollection(joined.get(), shared.get(), 0, 0));
            EXPECT_LE(joined.certificates().size(), 2U);
            const OpenStore private_store = OpenStore::memory();
            const CertificateContext context = certificate_context(a);
            EXPECT_TRUE(
                CertAddCertificateContextToStore(private_store.get(), context.get(), 4, nullptr));
            CRL_ENTRY* entry = nullptr;
            EXPECT_TRUE(CertFindCertificateInCRL(context.get(), crl.get(), 0, nullptr, &entry));
            EXPECT_NE(entry, nullptr);
            if (number == 0)
                write("Threads", "b.cer", ++rounds % 2 == 0 ? b : c);
        }
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < thread_count; ++number)
        threads.emplace_back(work, number);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GT(rounds, 0);
    EXPECT_EQ(shared.certificates().size(), 2U);
}

} // namespace
} // namespace norvane::testing
