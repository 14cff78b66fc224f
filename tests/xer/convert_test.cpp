#include "xer/Conversion.h"

using namespace norvane::testing;

namespace {

std::string replaced(std::string text, const std::string& part, const std::string& by) {
    return text.replace(text.find(part), part.size(), by);
}

const std::string root_end = "</GostR3410-94-PublicKeyParameters>";

} // namespace

TEST(ConvertKey, TakesAlgorithmFromTheGroupOfPublicKeysAlone) {
    EXPECT_EQ(convert(key_text, parameters_text).bytes, key_blob(parameters));
    // Another algorithm of keys, its number in the blob; a hash; none.
    const Blob other = convert(key_text, parameters_text, Ask::blob, "1.2.643.2.2.19");
    ASSERT_EQ(other.bytes.size(), key_blob(parameters).size());
    EXPECT_EQ(other.bytes[4], CALG_NORVANE_GOST_R3410_2001 & 0xff);
    for (const char* oid : {"1.2.643.2.2.9", "", "1.2.643.2.2.20 "}) {
        const Blob blob = convert("", "", Ask::blob, oid);
        EXPECT_FALSE(blob.done) << oid;
        EXPECT_EQ(blob.error, CRYPT_E_NOT_FOUND) << oid;
        EXPECT_EQ(blob.size, untouched) << oid;
    }
}

TEST(ConvertKey, TellsWrongTagsFromWrongBase64BeforeItReadsParameters) {
    const std::string other = "<GostR3410_94_PublicKeyOctetstring>";
    const struct {
        std::string text;
        DWORD error;
    } rows[] = {
        {"", untouched},
        {opening, untouched},
        {closing, untouched},
        {closing.substr(1), untouched},
        {opening + closing.substr(1), untouched},
        {opening + closing, untouched},
        {key_text + "\n", untouched},
        {key_text + std::string(1, '\0'), untouched},
        {" " + key_text, untouched},
        {other + "QUJD" + closing, untouched},
        {opening + "QUJD" + replaced(closing, "String", "Strinq"), untouched},
        {opening + "QUJD</ " + closing.substr(2), untouched},
        {opening + "QUJD" + opening, untouched},
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
    for (const std::string& text : {
             R"(<?xml version="1.0"?>)" + parameters_text,
             "<?xml version = '1.1' encoding='UTF-8' standalone=\"yes\" ?>\r\n" + parameters_text,
             "\n" + replaced(parameters_text, "><d", ">\n \t<d") + "\n",
             replaced(parameters_text, root_end, "\r\n" + root_end),
             padding + parameters_text,
         }) {
        EXPECT_EQ(convert(key_text, text).bytes, key_blob(parameters)) << text;
    }
}

TEST(ConvertKey, RefusesAnythingElseInParameters) {
    const auto with_set = [](const std::string& set) {
        return replaced(parameters_text, "1.2.643.2.2.30.1", set);
    };
    const auto instead = [](const std::string& part, const std::string& by) {
        return replaced(parameters_text, part, by);
    };
    std::string many_arcs = "1.2";
    for (int i = 0; i < 127; ++i) {
        many_arcs += ".1";
    }
    const std::string set = "<encryptionParamSet>1.2</encryptionParamSet>";
    const std::string rows[] = {
        "",
        " ",
        "1.2",
        parameters_text.substr(0, parameters_text.size() - 1),
        parameters_text + "x",
        parameters_text + parameters_text,
        parameters_text + std::string(1, '\0'),
        parameters_text + std::string(65537 - parameters_text.size(), ' '),
        "\xEF\xBB\xBF" + parameters_text,
        R"( <?xml version="1.0"?>)" + parameters_text,
        R"(<?xml version="2.0"?>)" + parameters_text,
        R"(<?xml version="1.0' ?>)" + parameters_text,
        R"(<?xml version="1.0"encoding="UTF-8"?>)" + parameters_text,
        R"(<?xml version="1.0" standalone="maybe"?>)" + parameters_text,
        R"(<?xml version="1.0")",
        "<!DOCTYPE x>" + parameters_text,
        "<!-- -->" + parameters_text,
        "<?pi?>" + parameters_text,
        instead("<digest", "x<digest"),
        instead("<digest", "<!-- --><digest"),
        instead("<digestParamSet>", "<digestParamSet >"),
        instead("<digestParamSet>", "<digestParamSet a='b'>"),
        instead("<digestParamSet>", "<DigestParamSet>"),
        instead("</digestParamSet>", "</publicKeyParamSet>"),
        instead("<digestParamSet>1.2.643.2.2.30.1</digestParamSet>", ""),
        instead("<digestParamSet>1.2.643.2.2.30.1</digestParamSet>", set),
        instead("<digestParamSet>", "<digestParamSet><digestParamSet>"),
        instead(root_end, set + set + root_end),
        instead(root_end, set + "<more>1.2</more>" + root_end),
        instead(root_end, root_end.substr(0, 1) + root_end),
        with_set(""),
        with_set(" "),
        with_set("1.2 "),
        with_set("&#49;.2"),
        with_set("&one;.2"),
        with_set("<![CDATA[1.2]]>"),
        with_set("1.2<x>3</x>"),
        with_set("1"),
        with_set("1.2."),
        with_set(".1.2"),
        with_set("1..2"),
        with_set("1.+2"),
        with_set("1.02"),
        with_set("0x1.2"),
        with_set("1.40"),
        with_set("3.1"),
        with_set("1.2.4294967296"),
        with_set(many_arcs),
    };
    for (const std::string& text : rows) {
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
