// What a run leaves for later, and what comes of it then.
#include "EvidenceArchive.h"
#include "EvidenceManifest.h"
#include "SmallPki.h"
#include "support/HttpServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zip.h>

namespace norvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A member of an archive as no run writes it.
struct RawMember {
    std::string name;
    std::string content;
    std::uint32_t mode = S_IFREG | 0644;
};

void write_zip(const std::string& path, const std::vector<RawMember>& members) {
    int error = 0;
    zip_t* const archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(archive, nullptr);
    for (const auto& [name, content, mode] : members) {
        zip_source_t* const source = zip_source_buffer(archive, content.data(), content.size(), 0);
        const auto index =
            static_cast<zip_uint64_t>(zip_file_add(archive, name.c_str(), source, 0));
        zip_file_set_external_attributes(archive, index, 0, ZIP_OPSYS_UNIX, mode << 16);
    }
    ASSERT_EQ(zip_close(archive), 0);
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

Members members_of(const std::string& path) {
    const std::string bytes = content_of(path);
    return read_archive({reinterpret_cast<const std::uint8_t*>(bytes.data()),
                         static_cast<std::uint32_t>(bytes.size())});
}

// With a manifest to which `from` and `to` make the only difference, and digests that fit.
Members with_changed_manifest(Members members, std::string_view from, std::string_view to) {
    const auto node = members.extract(std::string(manifest_name));
    return with_manifest(read_manifest(replaced(node.mapped(), from, to)), std::move(members));
}

// An evidence of the samples in `folder`, whose revoked certificate is the second.
std::string sample_evidence(const TemporaryFolder& folder, const Arguments& more = {}) {
    std::string file = folder.path() / "evidence.zip";
    Arguments arguments = with_samples(
        {"-q", "--evidence", file, examples + "gost-good.pem", examples + "rsa-revoked.pem"});
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(run_revcheck(arguments).code, 1);
    return file;
}

// How the same verdicts as those of the run come of the archive alone.
void expect_same(const std::string& evidence, const Ending& run) {
    const Ending again = run_revcheck({"replay", evidence, "--json", "--explain"});
    EXPECT_EQ(again.out, run.out);
    EXPECT_EQ(again.code, run.code);
    EXPECT_THAT(again.err, IsEmpty());
}

} // namespace

TEST(Evidence, GivesTheSameVerdictsWhenStoresAreGone) {
    const TemporaryFolder folder;
    const SmallPki pki;
    const std::string leaf = pki.write("leaf.der", {});
    for (const char* const part : {"Root", "CA"})
        std::filesystem::copy(examples + "stores/" + part, folder.path() / part,
                              std::filesystem::copy_options::recursive);
    const std::string file = folder.path() / "e.zip";
    for (const Arguments& way : {Arguments{}, Arguments{"--list"}}) {
        Arguments all{"--root",
                      folder.path() / "Root",
                      "--ca",
                      folder.path() / "CA",
                      "--cache-only",
                      "--certs",
                      folder.path() / "Root",
                      "--issuer",
                      pki.root,
                      "--strict-pkup",
                      "--json",
                      "--explain",
                      "--evidence",
                      file,
                      examples + "rsa-good.pem",
                      examples + "gost-revoked.pem",
                      leaf};
        all.insert(all.end(), way.begin(), way.end());
        const Ending run = run_revcheck(all);
        ASSERT_EQ(run.verdicts().size(), way.empty() ? 3U : 2U);
        std::filesystem::rename(folder.path() / "Root", folder.path() / "gone");
        expect_same(file, run);
        std::filesystem::rename(folder.path() / "gone", folder.path() / "Root");
    }
}

TEST(Evidence, OfTheNetworkGivesTheSameVerdictsWithoutIt) {
    const TemporaryFolder folder;
    const SmallPki pki;
    const std::string file = folder.path() / "e.zip";
    for (const Arguments& way : {Arguments{}, Arguments{"--accumulative", "--timeout", "2000"}}) {
        auto server = std::make_unique<HttpServer>();
        HttpReply slow = http_reply(text(CrlBuilder().sign(Key::ec(0))));
        slow.before = std::chrono::milliseconds(150);
        server->on("/delta", slow);
        server->on_with_etag("/crl", text(CrlBuilder().sign(Key::ec(0))), "a");
        const auto point = [&](const char* path) {
            return DistributionPoint{.full_name = {url(server->url(path))}};
        };
        const std::string good =
            pki.write("good.der",
                      {.extensions = {crl_distribution_points({point("/none"), point("/delta")})}});
        const std::string other =
            pki.write("other.der", {.extensions = {crl_distribution_points({point("/none")})}});
        Arguments all = pki.arguments({"--explain", "--cache-dir", folder.path() / "cache",
                                       "--evidence", file, good, other, good});
        all.insert(all.end(), way.begin(), way.end());
        const Ending run = run_revcheck(all);
        ASSERT_EQ(run.verdicts().size(), 3U);
        EXPECT_EQ(run.verdicts()[0]["status"], "good");
        EXPECT_EQ(run.verdicts()[1]["status"], "no_check");
        server.reset();
        std::filesystem::remove_all(folder.path() / "cache");
        expect_same(file, run);
        const Members members = with_changed_manifest(members_of(file), "/none", "/nine");
        write_archive(file, members);
        const Ending other_urls = run_revcheck({"replay", file, "--json"});
        EXPECT_EQ(other_urls.code, 3);
        EXPECT_THAT(other_urls.err, HasSubstr("the evidence has no such retrieval: http://"));
        for (const auto& verdict : other_urls.verdicts())
            EXPECT_EQ(verdict["status"], "no_check") << "what is not there is no fact";
        std::filesystem::remove_all(folder.path() / "cache");
    }
}

TEST(Evidence, OfTheSameIsTheSameOctetsInAnyTimeZone) {
    const SmallPki pki;
    const std::string file = pki.folder.path() / "e.zip";
    const std::string crl = pki.folder.write("a.crl", text(CrlBuilder().sign(Key::ec(0))));
    const Arguments all =
        pki.arguments({"--crls", crl, "--evidence", file, pki.write("leaf.der", {})});
    EXPECT_EQ(run_revcheck(all).code, 0);
    const std::string first = content_of(file);
    setenv("TZ", "Asia/Tokyo", 1); // NOLINT(concurrency-mt-unsafe)
    EXPECT_EQ(run_revcheck(all).code, 0);
    unsetenv("TZ"); // NOLINT(concurrency-mt-unsafe)
    EXPECT_TRUE(content_of(file) == first);
}

TEST(Evidence, WithAnotherCrlGivesADifference) {
    const TemporaryFolder folder;
    const std::string file = sample_evidence(folder);
    Members members = members_of(file);
    const Evidence evidence = read_evidence(members);
    std::string manifest = members.extract(std::string(manifest_name)).mapped();
    for (const std::string& name : evidence.stores.ca) {
        if (name.ends_with(".crl")) {
            std::string crl = members.extract(name).mapped();
            crl.back() = static_cast<char>(crl.back() ^ 1); // of the signature
            const std::string changed = object_member_name(crl, ObjectType::crl);
            members[changed] = crl;
            manifest = replaced(manifest, name, changed);
        }
    }
    auto json = nlohmann::ordered_json::parse(manifest);
    json["members"] = nlohmann::ordered_json::object();
    write_archive(file, with_manifest(read_manifest(json.dump(1) + "\n"), members));
    const Ending ending = run_revcheck({"replay", file, "-q"});
    EXPECT_EQ(ending.code, 3);
    EXPECT_THAT(ending.err, HasSubstr("verdicts.jsonl, line 1: at /status: expected \"good\", got "
                                      "\"no_check\""));
}

TEST(Evidence, ThatIsHostileIsRefusedWithTheReason) {
    const TemporaryFolder folder;
    const Members genuine = members_of(sample_evidence(folder));
    const std::string object = "objects/" + std::string(64, 'a') + ".cer";
    const std::string twin = "objects/" + std::string(64, 'b') + ".cer";
    const std::string file = folder.path() / "hostile.zip";
    const auto zipped = [&](const std::vector<RawMember>& members) {
        write_zip(file, members);
        return content_of(file);
    };
    const auto archived = [&](const Members& members) {
        std::vector<RawMember> raw;
        for (const auto& [name, content] : members)
            raw.push_back({name, content});
        return zipped(raw);
    };
    const auto changed = [&](std::string_view from, std::string_view to) {
        Members members = genuine;
        std::string& manifest = members.at(std::string(manifest_name));
        manifest = replaced(manifest, from, to);
        return archived(members);
    };
    Members without = genuine;
    without.erase(std::string(records_name));
    Members more = genuine;
    more[object] = "1";
    Members told = more;
    told.erase(std::string(manifest_name));
    const Evidence evidence = read_evidence(genuine);
    std::string encrypted = zipped({{object, "1"}});
    encrypted[6] = 1; // The flags of the member, and below in the directory.
    encrypted[encrypted.find("PK\1\2") + 8] = 1;
    const std::string whole = archived(genuine);
    std::string damaged = whole;
    damaged[200] = static_cast<char>(damaged[200] ^ 1);
    const struct {
        std::string bytes;
        const char* reason;
    } table[] = {
        {"", "manifest.json is missing"},
        {whole.substr(0, whole.size() - 40), "it is no whole archive"},
        {whole.substr(0, whole.size() / 2), "it is no whole archive"},
        {zipped({{"../" + object, "1"}}), "has a name that no evidence has"},
        {zipped({{"/" + object, "1"}}), "has a name that no evidence has"},
        {zipped({{replaced(object, "/", "\\"), "1"}}), "has a name that no evidence has"},
        {zipped({{object + "/", ""}}), "has a name that no evidence has"},
        {replaced(zipped({{object, "1"}, {twin, "1"}}), twin, object),
         "it is no whole archive: File already exists"},
        {zipped({{object, "/etc/passwd", S_IFLNK | 0777}}), "is no plain file"},
        {encrypted, "is encrypted"},
        {zipped({{"manifest.json", std::string(max_manifest_octets + 1, ' ')}}),
         "is larger than 16777216 octets"},
        {damaged, "cannot be unpacked"},
        {zipped(std::vector<RawMember>(1, {"verdicts.jsonl", "{}"})), "manifest.json is missing"},
        {zipped({{"manifest.json", std::string(40, '[')}}), "nested too deeply"},
        {zipped({{"manifest.json", "{}"}}), "manifest.json is malformed"},
        {changed("\"format\": 1", "\"format\": 2"), "of a format that this program does not know"},
        {changed("\"format\": 1", "\"format\": 1, \"format\": 1"), "is not as this program writes"},
        {changed("\"faults\": []", "\"faults\": [], \"x\": 1"), "is not as this program writes it"},
        {changed("\"octets\": 4", "\"octets\": 5"), "has not the digest and size"},
        {archived(without), "that manifest.json tells of is missing: records.jsonl"},
        {archived(more), "manifest.json does not tell of member"},
        {archived(with_manifest(evidence, told)), "is not named after its content"},
    };
    for (const auto& [bytes, reason] : table) {
        const Ending ending = run_revcheck({"replay", folder.write("h.zip", bytes)});
        EXPECT_EQ(ending.code, 65);
        EXPECT_THAT(ending.err, HasSubstr(reason));
        EXPECT_THAT(ending.out, IsEmpty());
    }
    std::vector<RawMember> crowd;
    for (std::size_t i = 0; i <= max_archive_members; ++i)
        crowd.push_back({std::to_string(i), ""});
    EXPECT_THAT(run_revcheck({"replay", folder.write("h.zip", zipped(crowd))}).err,
                HasSubstr("more than 20000 members"));
}

TEST(Evidence, ThatCannotBeWrittenIsToldAndWhatWasThereStays) {
    const std::string good = examples + "rsa-good.pem";
    for (const char* const place : {"/nowhere/e.zip", "/dev/full"}) {
        const Ending ending = run_revcheck(with_samples({"-q", "--evidence", place, good}));
        EXPECT_EQ(ending.code, 74);
        EXPECT_THAT(ending.err, HasSubstr(std::string("revcheck: ") + place + ": is not written"));
    }
    EXPECT_EQ(run_revcheck({"replay"}).code, 64);
    EXPECT_EQ(run_revcheck({"replay", "e.zip", "--time", "2025-03-02T00:00:00Z"}).code, 64);
}

} // namespace norvane::testing
