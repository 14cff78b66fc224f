#include "asn1/ObjectIdentifier.h"

#include "asn1/Decoded.h"

#include <array>
#include <cstring>

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

TEST(ObjectIdentifiers, ArcsAreReadAndCompared) {
    const struct Case {
        Bytes content;
        const char* dotted;
    } cases[] = {
        {hex("00"), "0.0"},
        {hex("27"), "0.39"},
        {hex("28"), "1.0"},
        {hex("4f"), "1.39"},
        {hex("50"), "2.0"},
        {hex("8837"), "2.999"},
        {hex("5504"), "2.5.4"},
        {hex("550403"), "2.5.4.3"},
        {hex("55040300"), "2.5.4.3.0"},
        {hex("2a864886f70d"), "1.2.840.113549"},
        {hex("2a8fffffff7f"), "1.2.4294967295"},
        {hex("908080804f"), "2.4294967295"},
    };
    for (const Case& one : cases) {
        const ASN1TObjId oid(view(one.content));
        ASN1OBJID arcs;
        std::array<char, 64> text{};
        EXPECT_TRUE(ASN1TObjId::well_formed(oid.content()) && oid.get_arcs(arcs)) << one.dotted;
        EXPECT_EQ(rtOidToStr(arcs, text.data(), text.size()), std::strlen(one.dotted));
        EXPECT_STREQ(text.data(), one.dotted);
        for (const Case& other : cases) {
            const bool same = &one == &other;
            EXPECT_EQ(ASN1TObjId(view(other.content)) == oid, same) << one.dotted << other.dotted;
            EXPECT_EQ(ASN1TObjId(view(other.content)) == arcs, same) << one.dotted << other.dotted;
        }
    }
    for (const char* content : {"", "80", "8000", "2a80", "2a8001", "2a018001", "ff"}) {
        EXPECT_FALSE(ASN1TObjId::well_formed(view(hex(content)))) << content;
    }
}

TEST(ObjectIdentifiers, WhatDoesNotFitIsReportedAndEqualsNothing) {
    ASN1OBJID arcs;
    Bytes octets(ASN1OBJID::max_arcs - 1, 0x01); // The first octet is two arcs.
    EXPECT_TRUE(ASN1TObjId(view(octets)).get_arcs(arcs));
    EXPECT_EQ(arcs.numids, ASN1OBJID::max_arcs);
    octets.push_back(1);
    for (const Bytes& content : {octets, hex("2a9080808000"), hex("9080808050"),
                                 hex("2affffffffffffffffffffffffffff7f")}) {
        const ASN1TObjId oid(view(content));
        EXPECT_TRUE(ASN1TObjId::well_formed(view(content)));
        EXPECT_FALSE(oid.get_arcs(arcs));
        EXPECT_FALSE(oid == arcs);
        EXPECT_TRUE(oid == ASN1TObjId(view(content)));
    }
    const ASN1OBJID oid{3, {1, 2, 840}};
    std::array<char, 8> text{};
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_EQ(rtOidToStr(oid, text.data(), size), 0) << size;
    }
    EXPECT_EQ(rtOidToStr(oid, text.data(), text.size()), 7);
    EXPECT_EQ(rtOidToStr(ASN1OBJID{}, text.data(), text.size()), 0);
}

} // namespace
} // namespace norvane::testing
