#include "support/ConfiguredProcess.h"

#include <norvane/wincrypt.h>

#include <string>
#include <vector>

namespace {

using norvane::testing::passes_when_configured;
using norvane::testing::TemporaryFolder;

DWORD outcome(BOOL result) { return result != 0 ? ERROR_SUCCESS : GetLastError(); }

DWORD strict_check() {
    HKEY key = nullptr;
    DWORD value = 0;
    DWORD size = sizeof value;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, NORVANE_W("a"), 0, KEY_READ, &key), 0);
    EXPECT_EQ(RegQueryValueExW(key, NORVANE_W("x"), nullptr, nullptr,
                               reinterpret_cast<BYTE*>(&value), &size),
              0);
    RegCloseKey(key);
    return value;
}

BOOL note(LPCSTR file, DWORD line, LPCSTR text, void* argument) {
    static_cast<std::vector<std::string>*>(argument)->push_back(
        std::filesystem::path(file).filename().string() + ":" + std::to_string(line) + ": " + text);
    return TRUE;
}

} // namespace

TEST(SteeredConfiguration, StandsOverTheFilesUntilItIsReadAndIsCheckedAtOnce) {
    const TemporaryFolder folder;
    const std::string named = folder.write("named", "[registry]\nHKLM\\a\\x = dword:2\n[none]\n");
    EXPECT_TRUE(passes_when_configured("[registry]\nHKLM\\a\\x = dword:1\n[bad]\n", [&] {
        const auto set = [](LPCSTR section, LPCSTR key, LPCSTR value) {
            return outcome(NorvaneSetConfiguration(section, key, value));
        };
        EXPECT_EQ(set("Registry", "hklm\\A\\X", "dword:3"), ERROR_SUCCESS);
        EXPECT_EQ(set("registry", "HKLM\\a\\x", "dword:4"), ERROR_SUCCESS);
        EXPECT_EQ(set("registry", "HKLM\\a\\x", "4"), ERROR_INVALID_DATA);
        EXPECT_EQ(set("registry", "x", "dword:4"), ERROR_NOT_FOUND);
        EXPECT_EQ(set("retrieval", "none", "4"), ERROR_NOT_FOUND);
        EXPECT_EQ(set("stores", "Root", "relative"), ERROR_INVALID_DATA);
        EXPECT_EQ(set("stores", "Root", nullptr), E_INVALIDARG);
        EXPECT_EQ(outcome(NorvaneSetConfigurationFile("")), E_INVALIDARG);
        EXPECT_EQ(outcome(NorvaneSetConfigurationFile(named.c_str())), ERROR_SUCCESS);

        EXPECT_EQ(strict_check(), 4U);
        std::vector<std::string> problems;
        EXPECT_TRUE(NorvaneEnumConfigurationProblems(note, &problems));
        EXPECT_EQ(problems, std::vector<std::string>{"named:3: there is no section \"none\""})
            << "and nothing of the file of the environment";
        EXPECT_EQ(set("registry", "HKLM\\a\\x", "dword:5"), E_ACCESSDENIED);
        EXPECT_EQ(outcome(NorvaneSetConfigurationFile("/x")), E_ACCESSDENIED);
    }));
}
