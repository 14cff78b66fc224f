#include "xer/Conversion.h"

#include <utility>
#include <vector>

using namespace norvane::testing;

namespace {

std::string replaced(std::string text, const std::string& part, const std::string& by) {
    return text.replace(text.find(part), part.size(), by);
}

const std::string root_end = "</GostR3410-94-PublicKeyParameters>";

} // namespace

TEST(ConvertKey, TakesAlgorithmFromTheGroupOfPublicKeysAlone) {
    // Another algorithm of keys, its number in the blob; a hash; none.
    const Blob other = convert(key_text, parameters_text, "1.2.643.2.2.19");
    ASSERT_EQ(other.bytes.size(), key_blob(parameters).size());
    EXPECT_EQ(other.bytes[4], CALG_NORVANE_GOST_R3410_2001 & 0xff);
    for (const char* oid : {"1.2.643.2.2.9", "1.2.643.2.2.20 "}) {
        const Blob blob = convert("", "", oid);
        EXPECT_FALSE(blob.done) << oid;
        EXPECT_EQ(blob.error, CRYPT_E_NOT_FOUND) << oid;
        EXPECT_EQ(blob.size, untouched) << oid;
    }
}

TEST(ConvertKey, TellsWrongTagsFromWrongBase64BeforeItReadsParameters) {
    const struct {
        std::string text;
        DWORD error;
    } rows[] = {
        {"", untouched},
        {opening + closing.substr(1), untouched},
        {opening + closing, untouched},
        {key_text + "\n", untouched},
        {replaced(key_text, ">QU", "]QU"), untouched},
        {opening + "QUJD" + replaced(closing, "String", "Strinq"), untouched},
        {opening + "QUJD</ " + closing.substr(2), untouched},
        {opening + "QU*D" + closing, CRYPT_E_BAD_ENCODE},
        {opening + std::string(80, 'A') + closing, CRYPT_E_BAD_ENCODE},
        {opening + "\n" + closing, ERROR_SUCCESS},
    };
    for (const auto& [text, error] : rows) {
        const Blob blob = convert(text, "");
        EXPECT_FALSE(blob.done) << text;
        EXPECT_EQ(blob.error, error) << text;
    }
    EXPECT_EQ(convert(opening + "QQ==" + closing, parameters_text).bytes,
              key_blob(parameters, text_bytes("A")));
}

TEST(ConvertKey, ReadsParametersWithWhiteSpaceAndDeclaration) {
    const std::string padding(65536 - parameters_text.size(), ' ');
    for (const std::string& text :
         {R"(<?xml version="1.0"?>)" + parameters_text,
          "<?xml version = '1.1' encoding='UTF-8' standalone=\"yes\" ?>\r\n" + parameters_text,
          "\n" + replaced(parameters_text, "><d", ">\n \t<d") + "\n",
          replaced(parameters_text, root_end, "\r\n" + root_end), padding + parameters_text}) {
        EXPECT_EQ(convert(key_text, text).bytes, key_blob(parameters)) << text;
    }
}

TEST(ConvertKey, RefusesAnythingElseInParameters) {
    const auto with_set = [](const std::string& set) {
        return replaced(parameters_text, "1.2.643.2.2.30.1", set);
    };
    std::string many_arcs = "1.2";
    for (int i = 0; i < 127; ++i) {
        many_arcs += ".1";
    }
    std::vector<std::string> texts = {
        "", parameters_text + "x", parameters_text + std::string(1, '\0'),
        parameters_text + std::string(65537 - parameters_text.size(), ' '),
        parameters_text.substr(0, parameters_text.size() - 1)};
    for (const char* front :
         {"\xEF\xBB\xBF", "<!DOCTYPE x>", "<!-- -->", "<?pi?>", R"( <?xml version="1.0"?>)",
          R"(<?xml version="2.0"?>)", R"(<?xml version="1.0' ?>)", "</x>",
          R"(<?xml version="1.0"encoding="UTF-8"?>)", R"(<?xml version="1.0" standalone="maybe"?>)",
          R"(<?xml version="1.0" encoding="-"?>)", R"(<?xmlversion="1.0"?>)",
          R"(<?xml version="1.0")"}) {
        texts.push_back(front + parameters_text);
    }
    for (const std::string& set : std::vector<std::string>{
             "", "1.2 ", "&#49;.2", "<![CDATA[1.2]]>", "1.2<x>3</x>", "1", "1.2.", "1..2", "1.+2",
             "1.02", "0x1.2", "1.40", "3.1", "1.2.4294967296", many_arcs}) {
        texts.push_back(with_set(set));
    }
    const std::string digest = "<digestParamSet>1.2.643.2.2.30.1</digestParamSet>";
    const std::string cipher = "<encryptionParamSet>1.2</encryptionParamSet>";
    const std::pair<std::string, std::string> replacements[] = {
        {root_end, "1.2" + root_end},
        {"<digest", "<!-- --><digest"},
        {"<digestParamSet>", "<digestParamSet >"},
        {"<digestParamSet>", "<digestParamSet a='b'>"},
        {"<digestParamSet>", "<digestParamSet><digestParamSet>"},
        {"</digestParamSet>", "</publicKeyParamSet>"},
        {digest, ""},
        {digest, cipher},
        {root_end, cipher + cipher + root_end}};
    for (const auto& [part, by] : replacements) {
        texts.push_back(replaced(parameters_text, part, by));
    }
    for (const std::string& text : texts) {
        const Blob blob = convert(key_text, text);
        EXPECT_FALSE(blob.done) << text;
        EXPECT_EQ(blob.error, CRYPT_E_ASN1_ERROR) << text;
        EXPECT_EQ(blob.size, untouched) << text;
    }
    // The last ones on this side of the limits.
    for (const std::string& text :
         {with_set("2.4294967295.4294967295"), with_set(many_arcs.substr(2)), with_set("1.39.0")}) {
        const Blob blob = convert(key_text, text);
        ASSERT_TRUE(blob.done) << text;
        EXPECT_EQ(encode(blob.bytes).parameters, text);
    }
}
