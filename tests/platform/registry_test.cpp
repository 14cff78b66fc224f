#include "support/ConfiguredProcess.h"

#include <norvane/wincrypt.h>

#include <array>
#include <cstring>
#include <thread>
#include <vector>

namespace {

/// Opens a key for reading; null with the error told.
HKEY open(HKEY parent, LPCWSTR name, DWORD expected = ERROR_SUCCESS) {
    HKEY key = nullptr;
    EXPECT_EQ(static_cast<DWORD>(RegOpenKeyExW(parent, name, 0, KEY_QUERY_VALUE, &key)), expected);
    EXPECT_EQ(key != nullptr, expected == ERROR_SUCCESS);
    return key;
}

/// Asks for a value and expects this; gives the bytes, with others behind them.
std::vector<BYTE> query(HKEY key, LPCWSTR name, DWORD room, DWORD status, DWORD size) {
    std::vector<BYTE> data(16, 0xEE);
    EXPECT_EQ(static_cast<DWORD>(RegQueryValueExW(key, name, nullptr, nullptr, data.data(), &room)),
              status);
    EXPECT_EQ(room, size);
    return data;
}

void check_registry() {
    open(HKEY_LOCAL_MACHINE, NORVANE_W("SOFTWARE\\Norvan"), ERROR_FILE_NOT_FOUND);
    open(HKEY_LOCAL_MACHINE, NORVANE_W("SOFTWARE\\Norvane\\Number"), ERROR_FILE_NOT_FOUND);
    const HKEY software = open(open(HKEY_LOCAL_MACHINE, nullptr), NORVANE_W("Software\\"));
    const HKEY key = open(software, NORVANE_W("norvane"));
    const auto number = query(key, NORVANE_W("NUMBER"), 4, ERROR_SUCCESS, 4);
    EXPECT_EQ(std::memcmp(number.data(), "\1\2\3\4\xEE", 5), 0);
    const auto cut = query(key, NORVANE_W("Number"), 3, ERROR_MORE_DATA, 4);
    EXPECT_EQ(cut[0], 0xEE) << "nothing is written in part";
    const auto text = query(key, NORVANE_W("Text"), 16, ERROR_SUCCESS, 8);
    EXPECT_EQ(std::memcmp(text.data(), u"\u00FC\U0001F600", 8), 0);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_NE(open(HKEY_CURRENT_USER, nullptr), key) << "not given out anew";
    query(key, NORVANE_W("NUMBER"), 16, ERROR_INVALID_HANDLE, 16);
}

} // namespace

TEST(Registry, GivesThreadsKeysInAnyCaseAndValuesByTheProtocolOfSizes) {
    EXPECT_TRUE(norvane::testing::passes_when_configured(
        "[registry]\n"
        "HKLM\\SOFTWARE\\Norvane\\Number = dword:0x04030201\n"
        "HKLM\\SOFTWARE\\Norvane\\Text = string:\xC3\xBC\xF0\x9F\x98\x80\n",
        [] {
            const std::array threads{std::jthread(check_registry), std::jthread(check_registry),
                                     std::jthread(check_registry)};
        }));
}
