#include "asn1/GostPublicKeyParametersXer.h"
#include "xer/Conversion.h"

namespace norvane::testing {
namespace {

/// Takes whatever comes.
class Indifferent final : public SaxHandler {
  public:
    void init() override {}
    bool startElement(std::string_view /*name*/) override { return true; }
    bool characters(std::string_view /*text*/) override { return true; }
    bool endElement(std::string_view /*name*/) override { return true; }
};

ByteView view(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()),
            static_cast<std::uint32_t>(text.size())};
}

TEST(Xml, NestsSixteenElementsAndNoMoreAndHasNoReferences) {
    std::string text;
    for (std::size_t depth = 1; depth <= max_xer_nesting + 1; ++depth) {
        text = "<a>" + text + "</a>";
        Indifferent handler;
        if (depth <= max_xer_nesting) {
            EXPECT_NO_THROW(parse_xml(view(text), handler)) << depth;
        } else {
            EXPECT_THROW(parse_xml(view(text), handler), OSRTSAXException);
        }
    }
    Indifferent handler;
    EXPECT_THROW(parse_xml(view("<a>&amp;</a>"), handler), OSRTSAXException);
}

TEST(Xer, IsWrittenOnLinesUnderADeclarationWithoutFlagsAndReadBack) {
    ASN1XERDecodeBuffer in(view(parameters_text).data, view(parameters_text).length);
    ASN1T_GostR3410_94_PublicKeyParameters value;
    ASN1C_GostR3410_94_PublicKeyParameters control(in, value);
    ASSERT_EQ(control.DecodeFrom(in), 0);
    EXPECT_EQ(value.m.encryptionParamSetPresent, 0U);
    ASN1XEREncodeBuffer out;
    ASSERT_EQ(control.EncodeTo(out), 0);
    const std::string text(out.getMsgPtr(), out.getMsgLen());
    EXPECT_EQ(text, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<GostR3410-94-PublicKeyParameters>\n"
                    "   <publicKeyParamSet>1.2.643.2.2.32.2</publicKeyParamSet>\n"
                    "   <digestParamSet>1.2.643.2.2.30.1</digestParamSet>\n"
                    "</GostR3410-94-PublicKeyParameters>\n");
    EXPECT_EQ(convert(key_text, text).bytes, key_blob(parameters));
}

TEST(Xer, LeavesValueEmptyAfterARefusalAndReadsTheNextText) {
    const std::string cut = "<GostR3410-94-PublicKeyParameters><publicKeyParamSet>1.2"
                            "</publicKeyParamSet></GostR3410-94-PublicKeyParameters>";
    ASN1XERDecodeBuffer bad(view(cut).data, view(cut).length);
    ASN1XERDecodeBuffer good(view(parameters_text).data, view(parameters_text).length);
    ASN1T_GostR3410_94_PublicKeyParameters value;
    ASN1C_GostR3410_94_PublicKeyParameters control(good, value);
    ASSERT_EQ(control.DecodeFrom(good), 0);
    EXPECT_THROW(static_cast<void>(control.DecodeFrom(bad)), OSRTSAXException);
    EXPECT_TRUE(value.encoding.empty());
    ASN1XEREncodeBuffer out;
    EXPECT_LT(control.EncodeTo(out), 0);
    EXPECT_EQ(control.DecodeFrom(good), 0);
}

} // namespace
} // namespace norvane::testing
