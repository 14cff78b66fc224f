#include "support/ConfiguredProcess.h"

#include <norvane/wincrypt.h>

#include <array>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

using norvane::testing::passes_when_configured;

constexpr std::string_view configured =
    "[registry]\n"
    "HKLM\\SOFTWARE\\Norvane\\Number = dword:0x04030201\n"
    "HKLM\\SOFTWARE\\Norvane\\Text = string:\xC3\xBC\xF0\x9F\x98\x80\n"
    "HKLM\\SOFTWARE\\NorvaneTwo\\Empty = string:\n"
    "HKLM\\Over\xF0\x9F\x98\x80\\x = dword:1\n"
    "HKCU\\direct = dword:7\n";

/// Opens a key for reading; null with the error told.
HKEY open(HKEY parent, LPCWSTR name, LSTATUS expected = ERROR_SUCCESS,
          REGSAM rights = KEY_QUERY_VALUE | KEY_WOW64_32KEY) {
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(parent, name, 0, rights, &key), expected);
    EXPECT_EQ(key != nullptr, expected == ERROR_SUCCESS);
    return key;
}

struct Answer {
    LSTATUS status = 0;
    DWORD type = 99;
    DWORD size = 0;
    std::array<BYTE, 16> data{};
};

Answer query(HKEY key, LPCWSTR name, DWORD room) {
    Answer answer;
    answer.data.fill(0xEE);
    answer.size = room;
    answer.status =
        RegQueryValueExW(key, name, nullptr, &answer.type, answer.data.data(), &answer.size);
    return answer;
}

void expect(const Answer& answer, DWORD status, DWORD type, DWORD size) {
    EXPECT_EQ(answer.status, static_cast<LSTATUS>(status));
    EXPECT_EQ(answer.type, type);
    EXPECT_EQ(answer.size, size);
}

constexpr LSTATUS not_found = ERROR_FILE_NOT_FOUND;
constexpr LSTATUS invalid_handle = ERROR_INVALID_HANDLE;
constexpr LSTATUS invalid_parameter = ERROR_INVALID_PARAMETER;

} // namespace

TEST(Registry, OpensKeysThatHoldValuesInAnyCaseAndFromAnyParent) {
    EXPECT_TRUE(passes_when_configured(configured, [] {
        for (const LPCWSTR name : {NORVANE_W("software"), NORVANE_W("SOFTWARE\\"),
                                   NORVANE_W("Software\\norvane"), NORVANE_W("over\U0001F600")}) {
            EXPECT_EQ(RegCloseKey(open(HKEY_LOCAL_MACHINE, name)), ERROR_SUCCESS);
        }
        for (const LPCWSTR name :
             {NORVANE_W("SOFT"), NORVANE_W("SOFTWARE\\Norvan"), NORVANE_W("\\SOFTWARE"),
              NORVANE_W("SOFTWARE\\\\Norvane"), NORVANE_W("SOFTWARE\\Norvane\\Number"),
              NORVANE_W("over\xD83D")}) {
            open(HKEY_LOCAL_MACHINE, name, not_found);
        }
        open(HKEY_CURRENT_USER, NORVANE_W("SOFTWARE"), not_found);

        const HKEY root = open(HKEY_LOCAL_MACHINE, nullptr);
        const HKEY software = open(root, NORVANE_W("Software"));
        const HKEY norvane = open(software, NORVANE_W("Norvane"));
        const HKEY again = open(norvane, NORVANE_W(""));
        expect(query(again, NORVANE_W("NUMBER"), 16), ERROR_SUCCESS, REG_DWORD, 4);
        expect(query(HKEY_CURRENT_USER, NORVANE_W("Direct"), 16), ERROR_SUCCESS, REG_DWORD, 4);
        for (const HKEY key : {root, software, norvane, again}) {
            EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
        }
    }));
}

TEST(Registry, HasItsRootsWithoutAnyValue) {
    EXPECT_TRUE(passes_when_configured("", [] {
        const HKEY root = open(HKEY_CURRENT_USER, nullptr);
        EXPECT_EQ(RegCloseKey(open(root, NORVANE_W(""))), ERROR_SUCCESS);
        open(root, NORVANE_W("SOFTWARE"), not_found);
    }));
}

TEST(Registry, GivesValuesByTheProtocolOfSizes) {
    EXPECT_TRUE(passes_when_configured(configured, [] {
        const HKEY key = open(HKEY_LOCAL_MACHINE, NORVANE_W("SOFTWARE\\Norvane"));
        Answer answer = query(key, NORVANE_W("number"), 4);
        expect(answer, ERROR_SUCCESS, REG_DWORD, 4);
        EXPECT_EQ(std::memcmp(answer.data.data(), "\1\2\3\4\xEE", 5), 0);
        answer = query(key, NORVANE_W("Number"), 3);
        expect(answer, ERROR_MORE_DATA, REG_DWORD, 4);
        EXPECT_EQ(answer.data[0], 0xEE) << "nothing is written in part";

        answer = query(key, NORVANE_W("Text"), 16);
        expect(answer, ERROR_SUCCESS, REG_SZ, 8);
        EXPECT_EQ(std::memcmp(answer.data.data(), u"\u00FC\U0001F600", 8), 0);
        expect(query(key, NORVANE_W("Text"), 6), ERROR_MORE_DATA, REG_SZ, 8);

        DWORD size = 0;
        EXPECT_EQ(RegQueryValueExW(key, NORVANE_W("Text"), nullptr, nullptr, nullptr, &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(size, 8U);
        EXPECT_EQ(RegQueryValueExW(key, NORVANE_W("Text"), nullptr, nullptr, nullptr, nullptr),
                  ERROR_SUCCESS);
        const HKEY two = open(HKEY_LOCAL_MACHINE, NORVANE_W("SOFTWARE\\NorvaneTwo"));
        expect(query(two, NORVANE_W("Empty"), 16), ERROR_SUCCESS, REG_SZ, 2);

        for (const LPCWSTR name : {NORVANE_W("Numbe"), NORVANE_W(""), NORVANE_W("x\\y")}) {
            expect(query(key, name, 16), ERROR_FILE_NOT_FOUND, 99, 16);
        }
        const HKEY parent = open(HKEY_LOCAL_MACHINE, NORVANE_W("SOFTWARE"));
        expect(query(parent, NORVANE_W("Norvane\\Number"), 16), ERROR_FILE_NOT_FOUND, 99, 16);
    }));
}

TEST(Registry, RefusesBadArgumentsAndClosedHandles) {
    EXPECT_TRUE(passes_when_configured(configured, [] {
        const LPCWSTR name = NORVANE_W("SOFTWARE");
        constexpr REGSAM key_set_value = 2;
        open(HKEY_LOCAL_MACHINE, name, ERROR_ACCESS_DENIED, KEY_QUERY_VALUE | key_set_value);
        open(HKEY_LOCAL_MACHINE, name, invalid_parameter, KEY_WOW64_32KEY | KEY_WOW64_64KEY);
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, name, 8, KEY_READ, &key), invalid_parameter);
        EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, name, 0, KEY_READ, nullptr), invalid_parameter);
        open(nullptr, name, invalid_handle);
        open(NORVANE_REGISTRY_ROOT(0x80000000U), name, invalid_handle);

        const HKEY blind = open(HKEY_CURRENT_USER, nullptr, ERROR_SUCCESS, 0);
        expect(query(blind, NORVANE_W("direct"), 16), ERROR_ACCESS_DENIED, 99, 16);
        BYTE byte = 0;
        DWORD size = 1;
        EXPECT_EQ(RegQueryValueExW(blind, name, nullptr, nullptr, &byte, nullptr),
                  invalid_parameter);
        EXPECT_EQ(RegQueryValueExW(blind, name, &size, nullptr, &byte, &size), invalid_parameter);

        EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
        EXPECT_EQ(RegCloseKey(blind), ERROR_SUCCESS);
        const HKEY other = open(HKEY_CURRENT_USER, nullptr);
        EXPECT_EQ(RegCloseKey(blind), invalid_handle) << "the handle was not given out anew";
        expect(query(blind, NORVANE_W("direct"), 16), ERROR_INVALID_HANDLE, 99, 16);
        open(blind, nullptr, invalid_handle);
        EXPECT_EQ(RegCloseKey(other), ERROR_SUCCESS);
    }));
}

TEST(Registry, ServesThreadsAtOnce) {
    EXPECT_TRUE(passes_when_configured(configured, [] {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                for (int round = 0; round < 200; ++round) {
                    const HKEY key = open(HKEY_LOCAL_MACHINE, NORVANE_W("SOFTWARE\\Norvane"));
                    expect(query(key, NORVANE_W("Number"), 4), ERROR_SUCCESS, REG_DWORD, 4);
                    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
                }
            });
        }
    }));
}
