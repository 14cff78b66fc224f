// What keeps a decoded structure alive. The address sanitizer is the judge of most of this.
#include "asn1/Decoded.h"
#include "asn1/Material.h"
#include "asn1/TreeText.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

TEST(Lifetime, StructuresAndShallowCopiesKeepTheirContext) {
    // The lengths are rewritten, so that all the views lie in the memory of the context.
    auto certificate =
        std::make_unique<Decoded<ASN1T_Certificate>>(to_indefinite(full_certificate()));
    auto list = std::make_unique<Decoded<ASN1T_CertificateList>>(to_indefinite(full_crl()));
    ASSERT_EQ(certificate->status, 0) << certificate->error();
    ASSERT_EQ(list->status, 0) << list->error();
    const ASN1T_TBSCertificate tbs = certificate->value.tbsCertificate;
    const ASN1T_TBSCertList tbs_list = list->value.tbsCertList;
    const ASN1T_Name subject = certificate->value.tbsCertificate.subject;
    ASN1T_Name issuer = certificate->value.tbsCertificate.issuer;
    const std::string texts = tree_text(tbs) + tree_text(tbs_list);
    issuer = list->value.tbsCertList.issuer;
    certificate.reset();
    list.reset();
    EXPECT_EQ(tree_text(tbs) + tree_text(tbs_list), texts);
    EXPECT_EQ(tree_text(issuer), tree_text(tbs_list.issuer));
    EXPECT_EQ(tree_text(subject), tree_text(tbs.subject));
}

TEST(Lifetime, BuffersAreArmedAnewWhileFormerValuesLive) {
    const Bytes first = to_indefinite(common_name("first"));
    const Bytes second = to_indefinite(common_name("second"));
    ASN1T_Name kept;
    ASN1T_Name name;
    {
        CACMPT_ASN1BERDecodeBuffer buffer(first.data(), view(first).length);
        ASSERT_EQ(ASN1C_Name(buffer, kept).DecodeFrom(buffer), 0);
        buffer.init();
        ASSERT_EQ(ASN1C_Name(buffer, name).DecodeFrom(buffer), 0);
        EXPECT_EQ(tree_text(name), tree_text(kept));
        EXPECT_NE(name.context.get(), kept.context.get());
        buffer.setBuffer(second.data(), view(second).length);
        ASSERT_EQ(ASN1C_Name(buffer, name).DecodeFrom(buffer), 0);
    }
    EXPECT_EQ(tree_text(kept), tree_text(Decoded<ASN1T_Name>(common_name("first")).value));
    EXPECT_EQ(tree_text(name), tree_text(Decoded<ASN1T_Name>(common_name("second")).value));
}

TEST(Lifetime, EncodingThroughATemporaryLeavesTheValueAlone) {
    Decoded<ASN1T_Name> name(varied_name());
    const std::string text = tree_text(name.value);
    ASN1BEREncodeBuffer buffer;
    const ASN1C_Name control(buffer, name.value);
    const int length = Asn1CtxtUnrefInDestructor<ASN1C_Name>(control).EncodeTo(buffer);
    ASSERT_EQ(length, name.input.size());
    EXPECT_TRUE(std::equal(name.input.begin(), name.input.end(), buffer.getMsgPtr()));
    EXPECT_EQ(tree_text(name.value), text);
}

TEST(Lifetime, MemoryOfAContextIsDistinctAndAligned) {
    ASN1CTXT ctxt;
    std::set<void*> pieces;
    for (const std::size_t size : {0U, 1U, 15U, 17U, 4063U, 5000U, 1U, 100000U, 0U, 64U}) {
        void* const piece = rtMemHeapAlloc(ctxt, size);
        ASSERT_NE(piece, nullptr);
        EXPECT_TRUE(size == 0 || pieces.insert(std::memset(piece, 0xaa, size)).second);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % alignof(std::max_align_t), 0);
    }
    EXPECT_THROW(static_cast<void>(rtMemHeapAlloc(ctxt, SIZE_MAX)), std::bad_alloc);
}

} // namespace
} // namespace norvane::testing
