#include "platform/config/Configuration.h"
#include "platform/config/ConfigurationText.h"
#include "platform/config/IniReader.h"
#include "support/ConfiguredProcess.h"

#include <sys/auxv.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

using namespace norvane;
using norvane::testing::TemporaryFolder;
using Lines = std::vector<std::string>;

Configuration followed(std::string_view text) {
    const UserFolders someone{.home = "/home/u", .config = "/home/u/c", .cache = "/home/u/k"};
    Configuration configuration = default_configuration(someone);
    follow_configuration_text(text, "f", someone, configuration);
    return configuration;
}

/// The problems, each as "line: text".
Lines told(const Configuration& configuration) {
    Lines lines;
    for (const ConfigurationProblem& problem : configuration.problems) {
        lines.push_back(std::to_string(problem.line) + ": " + problem.text);
    }
    return lines;
}

} // namespace

TEST(Configuration, TakesValuesOfEachKindUpToTheirLimits) {
    const Configuration c = followed("\xEF\xBB\xBF[REGISTRY]\r\n"
                                     "hklm\\A b\\c = dword:0X1f\r\n"
                                     "HKEY_CURRENT_USER\\v=STRING: a=b ; # c\r\n"
                                     "\n  [ stores ]  \nroot = ~/x : $CONFIG:/a\\:b\\\\ : /c\\d\n"
                                     "; comment\n  # comment = 1\n"
                                     "[retrieval]\ncache_size = 17179869183 G\n"
                                     "timeout = 4294967295ms");
    EXPECT_EQ(told(c), Lines{});
    EXPECT_EQ(c.registry.at("HKEY_LOCAL_MACHINE\\a B\\C"), RegistryValue(31U));
    EXPECT_EQ(c.registry.at("HKEY_CURRENT_USER\\v"), RegistryValue("a=b ; # c"));
    EXPECT_EQ(c.stores.at("Root"), (PathList{"/home/u/x", "/home/u/c", "/a:b\\", "/c\\d"}));
    EXPECT_EQ(c.cache_size_bytes, std::uint64_t{0x3FFFFFFFF} << 30);
    EXPECT_EQ(c.retrieval_timeout, std::chrono::milliseconds{0xFFFFFFFF});
}

TEST(Configuration, RefusesLinesAndValuesThatAreNotOfTheKind) {
    const std::pair<std::string_view, Lines> cases[] = {
        {"[crypto]\n", {"sha1=", "sha1=1", "sha1=on # weak", "sha2=on", "= on", "?", "[crypto"}},
        {"[retrieval]\ncache_size=", {"K", "-1", "17179869184G"}},
        {"[retrieval]\ntimeout=", {"15", "4294968s", "4294967296ms"}},
        {"[stores]\nRoot=", {"x", "~other/x", "$CONFIGURATION", "/a:", "/a::/b", "/a\\\\:b"}},
        {"[providers]\nmodules=", {"a/b.so", ".."}},
        {"[com]\n{00000000-0000-0000-0000-000000000000", {"}=../x.so", "=a.so", "0}=a.so"}},
        {"[registry]\nHKLM", {"=dword:1", "\\\\a=dword:1", "\\a\\=dword:1", "x\\a=dword:1"}},
        {"[registry]\nHKLM\\a=", {"1", "dword:", "dword:0x", "dword:1F", "dword:4294967296"}},
    };
    for (const auto& [start, ends] : cases) {
        for (const std::string& end : ends) {
            EXPECT_EQ(followed(std::string(start) + end).problems.size(), 1U) << start << end;
        }
    }
}

TEST(Configuration, TellsLinesThatItCannotFollowAndFollowsTheLastThatItCan) {
    using namespace std::string_literals;
    const Configuration c =
        followed("sha1 = off\n[none\x1b]\nsha1 = off\n[crypto]\nsha1 = off\nSha1 = maybe\nx = "s +
                 std::string(max_ini_line_length, 'x') + "\nsha1 = on\0\nsha1 = on\n"s);
    EXPECT_EQ(told(c),
              (Lines{"1: the key stands before the first section",
                     "2: there is no section \"none?\"", "6: key \"Sha1\" stands on line 5 already",
                     "6: \"maybe\" is not on or off", "7: the line is too long",
                     "8: the line has a zero byte", "9: key \"sha1\" stands on line 5 already"}));
    EXPECT_TRUE(c.sha1);
}

TEST(ConfigurationFiles, OverrideEarlierOnesKeyByKeyAndNeedNotBeReadable) {
    using enum FilePresence;
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    const std::string full = std::string(max_configuration_file_size, '\n');
    const Configuration c = load_configuration(std::vector<ConfigurationFile>{
        {folder.write("1", "[crypto]\nsha1=off\n[registry]\nHKLM\\x=dword:1\nHKLM\\y=dword:1\n"),
         required},
        {folder.path() / "pipe", optional},
        {folder.write("full", full), required},
        {folder.write("huge", full + "#"), required},
        {folder.write("2", "[Registry]\nhkey_local_machine\\Y=dword:2\n[crypto]\nsha1=nay\n"),
         required}});
    EXPECT_FALSE(c.sha1) << "what does not parse leaves the earlier file in force";
    EXPECT_EQ(c.registry.at("HKEY_LOCAL_MACHINE\\x"), RegistryValue(1U));
    EXPECT_EQ(c.registry.at("HKEY_LOCAL_MACHINE\\y"), RegistryValue(2U));
    EXPECT_EQ(told(c),
              (Lines{"0: this is not a regular file", "0: the file is larger than 1048576 bytes",
                     "4: \"nay\" is not on or off"}));
}

TEST(ConfigurationFiles, OfTheEnvironmentAreIgnoredInSetUidPrograms) {
    if (getauxval(AT_SECURE) != 0) { // the copy that is started below
        EXPECT_EQ(standard_configuration_files().size(), 1U);
        EXPECT_TRUE(user_folders().home.empty());
        std::fflush(nullptr);
        _exit(HasFailure() ? 1 : 0); // a search for leaks is not allowed in such a process
    }
    const TemporaryFolder folder;
    const std::string program = folder.path() / "program";
    std::filesystem::copy_file("/proc/self/exe", program);
    constexpr uid_t other_user = 65534;
    if (chown(program.c_str(), other_user, other_user) != 0 ||
        chmod(program.c_str(), S_ISUID | 0755) != 0) {
        GTEST_SKIP() << "only root can make a set-uid program of another user";
    }
    struct statvfs mount {};
    if (statvfs(program.c_str(), &mount) != 0 || (mount.f_flag & ST_NOSUID) != 0) {
        GTEST_SKIP() << "the folder for temporary files is mounted nosuid";
    }
    // NOLINTBEGIN(concurrency-mt-unsafe,cert-env33-c): one thread, and the command is ours
    setenv("HOME", "/h", 1);
    setenv("NORVANE_CONFIG", "/c", 1);
    EXPECT_EQ(standard_configuration_files().size(), 3U);
    EXPECT_EQ(std::system((program + " --gtest_brief=1 --gtest_filter=*SetUid*").c_str()), 0);
    // NOLINTEND(concurrency-mt-unsafe,cert-env33-c)
}
