#include "platform/config/Configuration.h"
#include "platform/config/ConfigurationKeys.h"
#include "platform/config/ConfigurationText.h"
#include "platform/config/FileText.h"
#include "platform/config/IniReader.h"
#include "support/ConfiguredProcess.h"

#include <set>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace norvane;
using norvane::testing::passes_when_configured;
using norvane::testing::TemporaryFolder;

const UserFolders someone{.home = "/home/u", .config = "/home/u/c", .cache = "/home/u/k"};
const UserFolders nobody{};

Configuration followed(std::string_view text, const UserFolders& folders = someone) {
    Configuration configuration = default_configuration(folders);
    follow_configuration_text(text, "f", folders, configuration);
    return configuration;
}

/// The problems, each as "line: text".
std::vector<std::string> told(const Configuration& configuration) {
    std::vector<std::string> lines;
    for (const ConfigurationProblem& problem : configuration.problems) {
        lines.push_back(std::to_string(problem.line) + ": " + problem.text);
    }
    return lines;
}

using Lines = std::vector<std::string>;

void set_variable(const char* name, const char* value) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): these tests have one thread when they do so
    EXPECT_EQ(value != nullptr ? setenv(name, value, 1) : unsetenv(name), 0);
}

} // namespace

TEST(ConfigurationKeys, HaveDefaultsThatParse) {
    for (const ConfigurationKey& row : configuration_keys()) {
        SCOPED_TRACE(std::string(row.section) + "." + std::string(row.key));
        EXPECT_EQ(find_configuration_key(row.section, row.key), &row) << "an earlier row hides it";
        if (row.key != any_key) {
            Configuration configuration;
            EXPECT_EQ(row.assign(configuration, row.key, row.default_value, someone),
                      Assignment::done);
        }
    }
}

TEST(Configuration, IsThatOfTheTableWithoutFiles) {
    const Configuration c = default_configuration(someone);
    const PathList root = {"/etc/norvane/stores/Root", "/home/u/c/stores/Root",
                           "/etc/ssl/certs/ca-certificates.crt"};
    ASSERT_NE(c.store_paths("ROOT"), nullptr);
    EXPECT_EQ(*c.store_paths("ROOT"), root);
    EXPECT_EQ(c.store_paths("My"), nullptr);
    EXPECT_EQ(c.cache_folder, "/home/u/k");
    EXPECT_EQ(c.response_limit_bytes, 512U << 20);
    EXPECT_EQ(c.retrieval_timeout, std::chrono::seconds{15});
    EXPECT_EQ(c.url_schemes, (Lines{"http", "https", "ldap", "ldaps"}));
    EXPECT_EQ(c.revocation_modules, PathList{"norvane_revocation.so"});
    EXPECT_EQ(c.components.at("{1fdd1fc3-6347-49df-bdab-e465bf32ad92}"), "norvane_pkup.so");
    EXPECT_EQ(c.max_signature_verifications, 10'000U);
    EXPECT_TRUE(c.sha1);

    const Configuration homeless = default_configuration(nobody);
    EXPECT_EQ(homeless.stores.at("CA"), PathList{"/etc/norvane/stores/CA"});
    EXPECT_TRUE(homeless.cache_folder.empty());
}

TEST(Configuration, TakesValuesOfEachKind) {
    const Configuration c = followed("\xEF\xBB\xBF[REGISTRY]\r\n"
                                     "hklm\\A b\\c = dword:0X1f\r\n"
                                     "HKEY_CURRENT_USER\\v=STRING: a=b ; # c\r\n"
                                     "HKCU\\max = dword:4294967295\n"
                                     "\n  [ stores ]  \n"
                                     "root = ~/x : $CONFIG:$CACHE/y\n"
                                     "Other=\n"
                                     "; comment\n  # comment = 1\n"
                                     "[retrieval]\n"
                                     "cache_folder =\n"
                                     "cache_size = 17179869183 G\n"
                                     "response_limit = 7\n"
                                     "schemes = LDAP \t http\n"
                                     "timeout = 4294967295ms\n"
                                     "proxy = http://p:1\n"
                                     "[providers]\n"
                                     "Modules = /a/b.so:c.so\n"
                                     "[com]\n"
                                     "{00000000-0000-0000-0000-00000000aBcD} = ~/d.so\n"
                                     "[crypto]\n"
                                     "sha1 = OFF");
    EXPECT_EQ(told(c), Lines{});
    EXPECT_EQ(c.registry.at("HKEY_LOCAL_MACHINE\\a B\\C"), RegistryValue(31U));
    EXPECT_EQ(c.registry.at("HKEY_CURRENT_USER\\v"), RegistryValue("a=b ; # c"));
    EXPECT_EQ(c.registry.at("HKEY_CURRENT_USER\\max"), RegistryValue(~0U));
    EXPECT_EQ(c.stores.at("Root"), (PathList{"/home/u/x", "/home/u/c", "/home/u/k/y"}));
    EXPECT_EQ(c.stores.at("other"), PathList{});
    EXPECT_EQ(c.cache_folder, "");
    EXPECT_EQ(c.cache_size_bytes, std::uint64_t{0x3FFFFFFFF} << 30);
    EXPECT_EQ(c.response_limit_bytes, 7U);
    EXPECT_EQ(c.url_schemes, (Lines{"ldap", "http"}));
    EXPECT_EQ(c.retrieval_timeout, std::chrono::milliseconds{0xFFFFFFFF});
    EXPECT_EQ(c.proxy, "http://p:1");
    EXPECT_EQ(c.revocation_modules, (PathList{"/a/b.so", "c.so"}));
    EXPECT_EQ(c.components.at("{00000000-0000-0000-0000-00000000ABCD}"), "/home/u/d.so");
    EXPECT_FALSE(c.sha1);
}

TEST(Configuration, RefusesValuesThatAreNotOfTheKind) {
    const struct {
        std::string_view section;
        std::string_view key;
        std::vector<std::string_view> values;
    } cases[] = {
        {"crypto", "sha1", {"", "1", "yes", "onn", "on off", "on # weak"}},
        {"limits", "signature_verifications", {"", "-1", "+1", "1.5", "0x10", "4294967296", "1K"}},
        {"retrieval", "cache_size", {"", "K", "-1", "1T", "1KB", "17179869184G", "1 2"}},
        {"retrieval", "timeout", {"", "15", "s", "1m", "4294968s", "4294967296ms", "-1s"}},
        {"retrieval", "cache_folder", {"relative", "./x", "~other/x", "$CONFIGURATION", "$HOME"}},
        {"retrieval", "schemes", {"file", "http,https", "http ftp"}},
        {"stores", "Root", {"x", "/a:", ":/a", "/a::/b", "/a:b"}},
        {"providers", "modules", {"a/b.so", "..", "/a:"}},
        {"com", "{00000000-0000-0000-0000-000000000000}", {"", "../x.so"}},
        {"registry",
         "HKLM\\a\\b",
         {"", "1", "dword:", "dword:0x", "dword:-1", "dword:1F", "dword:0x100000000",
          "dword:4294967296", "qword:1"}},
    };
    for (const auto& [section, key, values] : cases) {
        for (const std::string_view value : values) {
            std::string text = "[" + std::string(section) + "]\n";
            text.append(key).append(" = ").append(value);
            const Configuration c = followed(text);
            EXPECT_EQ(c.problems.size(), 1U) << text;
            EXPECT_TRUE(c.registry.empty()) << text;
        }
    }
    for (const std::string_view name :
         {"HKLM", "HKLM\\", "HKLM\\a\\", "HKLM\\a\\\\b", "HKLMx\\a", "HKCR\\a", "\\HKLM\\a"}) {
        EXPECT_EQ(told(followed("[registry]\n" + std::string(name) + " = dword:1")).size(), 1U)
            << name;
    }
    for (const std::string_view name :
         {"1FDD1FC3-6347-49DF-BDAB-E465BF32AD92", "{1FDD1FC3-6347-49DF-BDAB-E465BF32AD92",
          "{1FDD1FC3-6347-49DF-BDABE-465BF32AD92}", "{1FDD1FC3-6347-49DF-BDAB-E465BF32AD9G}"}) {
        EXPECT_EQ(told(followed("[com]\n" + std::string(name) + " = a.so")).size(), 1U) << name;
    }
}

TEST(Configuration, TellsLinesThatItCannotFollow) {
    using namespace std::string_literals;
    const std::string long_value(max_ini_line_length, 'x');
    const Configuration c = followed("sha1 = off\n"
                                     "[none\x1b]\n"
                                     "sha1 = off\n"
                                     "unheard of\n"
                                     "[crypto\n"
                                     "[crypto]\n"
                                     "sha1 = off\n"
                                     "sha2 = on\n"
                                     "= on\n"
                                     "Sha1 = maybe\n"
                                     "x = "s +
                                     long_value + "\n" +
                                     "sha1 = on\0\n"s
                                     "[crypto]\nsha1 = on\n[]\n");
    EXPECT_EQ(told(c), (Lines{
                           "1: the key stands before the first section",
                           "2: there is no section \"none?\"",
                           "4: the line is neither a section nor a key with a value",
                           "5: the name of the section has no closing bracket",
                           "8: section \"crypto\" has no key \"sha2\"",
                           "9: the line is neither a section nor a key with a value",
                           "10: key \"Sha1\" stands on line 7 already",
                           "10: \"maybe\" is not on or off",
                           "11: the line is too long",
                           "12: the line has a zero byte",
                           "14: key \"sha1\" stands on line 7 already",
                           "15: there is no section \"\"",
                       }));
    EXPECT_TRUE(c.sha1) << "the last one that parses wins";

    std::string many;
    for (int i = 0; i < 1000; ++i) {
        many += "?\n";
    }
    EXPECT_EQ(told(followed(many)).size(), 101U);
    EXPECT_EQ(told(followed(many)).back(), "101: there are more problems from here on");
}

TEST(ConfigurationFiles, OverrideEarlierOnesKeyByKey) {
    const TemporaryFolder folder;
    const ConfigurationFile files[] = {
        {folder.write("1", "[limits]\nsignature_verifications=1\n[crypto]\nsha1=off\n"
                           "[registry]\nHKLM\\a\\x=dword:1\nHKLM\\a\\y=dword:1\n"),
         FilePresence::required},
        {folder.path() / "absent", FilePresence::optional},
        {folder.write("2", "[Registry]\nhkey_local_machine\\A\\Y=dword:2\n[crypto]\nsha1=nay\n"),
         FilePresence::required}};
    const Configuration c = load_configuration(files);
    EXPECT_EQ(c.max_signature_verifications, 1U);
    EXPECT_FALSE(c.sha1) << "what does not parse leaves the earlier file in force";
    EXPECT_EQ(c.registry.at("HKEY_LOCAL_MACHINE\\a\\x"), RegistryValue(1U));
    EXPECT_EQ(c.registry.at("HKEY_LOCAL_MACHINE\\a\\y"), RegistryValue(2U));
    ASSERT_EQ(c.problems.size(), 1U);
    EXPECT_EQ(c.problems[0].file, folder.path() / "2");
    EXPECT_EQ(c.problems[0].line, 4U);
}

TEST(ConfigurationFiles, ThatCannotBeReadAreProblemsAndNoMore) {
    const TemporaryFolder folder;
    const auto pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string full = "[crypto]\nsha1 = off\n#";
    full.resize(max_configuration_file_size, '#');
    full[full.size() / 2] = '\n';
    const struct {
        std::filesystem::path path;
        Lines problems;
    } cases[] = {
        {folder.path(), {"0: this is not a regular file"}},
        {pipe, {"0: this is not a regular file"}},
        {folder.path() / "absent", {"0: there is no such file"}},
        {folder.write("file", "") / "below", {"0: there is no such file"}},
        {folder.path() / std::string(300, 'n'), {"0: the file cannot be read: File name too long"}},
        {folder.write("huge", full + "#"), {"0: the file is larger than 1048576 bytes"}},
        {folder.write("full", full), {}},
    };
    for (const auto& [path, problems] : cases) {
        const ConfigurationFile file{path, FilePresence::required};
        EXPECT_EQ(told(load_configuration({&file, 1})), problems) << path;
    }
    const ConfigurationFile optional{folder.path(), FilePresence::optional};
    EXPECT_EQ(load_configuration({&optional, 1}).problems.size(), 1U);
}

TEST(ConfigurationFiles, AreThoseOfMachineUserAndEnvironment) {
    const auto names = [](const char* home, const char* xdg, const char* named) {
        set_variable("HOME", home);
        set_variable("XDG_CONFIG_HOME", xdg);
        set_variable("NORVANE_CONFIG", named);
        Lines result;
        for (const ConfigurationFile& file : standard_configuration_files()) {
            const bool required = file.presence == FilePresence::required;
            result.push_back(file.path.string() + (required ? "!" : ""));
        }
        return result;
    };
    const std::string machine = "/etc/norvane/norvane.conf";
    EXPECT_EQ(names("/h", nullptr, "c"), (Lines{machine, "/h/.config/norvane/norvane.conf", "c!"}));
    EXPECT_EQ(names("/h", "/x", ""), (Lines{machine, "/x/norvane/norvane.conf"}));
    EXPECT_EQ(names("/h", "x", nullptr), (Lines{machine, "/h/.config/norvane/norvane.conf"}));
    EXPECT_EQ(names(nullptr, nullptr, nullptr), Lines{machine});
}

TEST(ConfigurationFiles, OfTheEnvironmentAreIgnoredInSetUidPrograms) {
    if (getauxval(AT_SECURE) != 0) { // the copy that is started below
        EXPECT_EQ(standard_configuration_files().size(), 1U);
        EXPECT_TRUE(user_folders().home.empty());
        std::fflush(nullptr);
        _exit(HasFailure() ? 1 : 0); // a search for leaks is not allowed in such a process
    }
    constexpr uid_t other_user = 65534;
    const TemporaryFolder folder;
    const auto program = folder.path() / "program";
    std::filesystem::copy_file("/proc/self/exe", program);
    if (chown(program.c_str(), other_user, other_user) != 0 ||
        chmod(program.c_str(), S_ISUID | 0755) != 0) {
        GTEST_SKIP() << "only root can make a set-uid program of another user";
    }
    set_variable("HOME", "/h");
    set_variable("NORVANE_CONFIG", "/c");
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string command = program.string() +
                                " --gtest_brief=1 --gtest_filter=" + info->test_suite_name() + "." +
                                info->name();
    // NOLINTNEXTLINE(concurrency-mt-unsafe,cert-env33-c): one thread, and the command is ours
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST(Configuration, IsLoadedOnceForAllThreadsOfTheProcess) {
    EXPECT_TRUE(passes_when_configured("[crypto]\nsha1 = off\nx = y", [] {
        std::set<const Configuration*> seen;
        std::mutex mutex;
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&] {
                const Configuration& c = configuration();
                const std::lock_guard lock(mutex);
                seen.insert(&c);
            });
        }
        threads.clear();
        ASSERT_EQ(seen.size(), 1U);
        EXPECT_FALSE((*seen.begin())->sha1);
        set_variable("NORVANE_CONFIG", "/absent");
        EXPECT_EQ(configuration().problems.size(), 1U);
    }));
}
