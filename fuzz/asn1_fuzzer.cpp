// Decodes one structure or text of the runtime. The first octet of the input says which, the others
// are what is decoded. What decodes must survive a walk over all of it, and decode to the same tree
// again from its re-encoding and from other forms of BER; what fails must say why.

#include "Asn1Check.h"
#include "asn1/BerHeader.h"
#include "asn1/CharString.h"
#include "asn1/ControlClass.h"
#include "asn1/MinimalLengths.h"
#include "asn1/Time.h"
#include "asn1/TreeText.h"
#include "support/Der.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>

using namespace norvane;
using norvane::testing::Asn1Check;
using norvane::testing::Bytes;
using norvane::testing::tree_text;

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

ByteView view(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}

std::string_view text_of(ByteView octets) {
    return {reinterpret_cast<const char*>(octets.data), octets.length};
}

void check_failure(const ASN1CTXT& ctxt, std::uint32_t input_length) {
    const ASN1Failure& failure = ctxt.failure;
    require(failure.status != ASN1Status::ok && !failure.element.empty() &&
            !failure.expected.empty() && !failure.found.empty() && failure.offset <= input_length);
    require(rtErrGetText(ctxt).find(failure.element) == 0);
}

/// The input with minimal lengths, empty if it is not one element of BER.
ByteView minimal_lengths(ASN1CTXT& ctxt, ByteView input) {
    MinimalLengths minimal(input);
    return minimal.measure().status == ASN1Status::ok ? minimal.rewrite(ctxt) : ByteView{};
}

/// Appends the elements, whose lengths are minimal, with indefinite ones where BER allows that.
void append_indefinite(Bytes& out, ByteView elements) {
    for (const std::uint8_t* at = elements.begin(); at != elements.end();) {
        BerHeader header;
        ASN1Failure failure;
        require(read_ber_header(elements, at, elements.end(), header, failure));
        const ByteView content{header.content, header.length};
        if (!header.constructed()) {
            out.insert(out.end(), at, content.end());
        } else {
            out.insert(out.end(), header.tag.begin(), header.tag.end());
            out.push_back(0x80);
            append_indefinite(out, content);
            out.insert(out.end(), 2, 0);
        }
        at = content.end();
    }
}

/// Decodes and checks what holds of every structure. False, with the value empty, if it fails.
template <class T>
bool decodes(ASN1CTXT& ctxt, ByteView input, T& value) {
    const int status = decode_element(ctxt, input, value);
    require(status <= 0);
    if (status == code(ASN1Status::ok)) {
        return true;
    }
    require(code(ctxt.failure.status) == status);
    check_failure(ctxt, input.length);
    require(tree_text(value) == tree_text(T{}));
    return false;
}

/// A structure without a control class: the content of an extension.
template <class T>
void check_structure(ByteView input) {
    ASN1CTXT ctxt;
    T value;
    if (!decodes(ctxt, input, value)) {
        return;
    }
    const std::string tree = tree_text(value);
    const ByteView minimal = minimal_lengths(ctxt, input);
    T again;
    require(decodes(ctxt, minimal, again) && tree_text(again) == tree);
    Bytes indefinite;
    append_indefinite(indefinite, minimal);
    require(decodes(ctxt, view(indefinite), again) && tree_text(again) == tree);
    require(!decodes(ctxt, {input.data, input.length - 1}, again));
}

template <class T>
ByteView encoding_of(ASN1BEREncodeBuffer& buffer, T& value) {
    const int length = ASN1C<T>(buffer, value).EncodeTo(buffer);
    require(length >= 1);
    return {buffer.getMsgPtr(), static_cast<std::uint32_t>(length)};
}

/// A structure with a control class, also through the buffers and with the former ones gone.
template <class T>
void check_control_class(ByteView input) {
    check_structure<T>(input);
    T value;
    {
        ASN1BERDecodeBuffer buffer(input.data, input.length);
        if (ASN1C<T>(buffer, value).DecodeFrom(buffer) < 0) {
            check_failure(buffer.getCtxt(), input.length);
            return;
        }
    }
    const T copy = value;
    const std::string tree = tree_text(value);
    ASN1BEREncodeBuffer first_buffer;
    const ByteView first = encoding_of(first_buffer, value);
    ASN1CTXT ctxt;
    require(first == minimal_lengths(ctxt, input));

    ASN1BERDecodeBuffer buffer(first.data, first.length);
    require(ASN1C<T>(buffer, value).DecodeFrom(buffer) == 0 && tree_text(value) == tree);
    ASN1BEREncodeBuffer second_buffer;
    require(encoding_of(second_buffer, value) == first);
    if constexpr (KeepsEncoding<T>) {
        require(second_buffer.getMsgPtr() == first.data);
    }
    require(tree_text(copy) == tree);
}

template <class Time>
void check_time(ByteView input) {
    constexpr std::array getters{&Time::getYear, &Time::getMonth,  &Time::getDay,
                                 &Time::getHour, &Time::getMinute, &Time::getSecond};
    constexpr std::array setters{&Time::setYear, &Time::setMonth,  &Time::setDay,
                                 &Time::setHour, &Time::setMinute, &Time::setSecond};
    ASN1BEREncodeBuffer buffer;
    std::string_view text = text_of(input);
    Time time(buffer, text);
    if (time.getYear() < 0) {
        check_failure(buffer.getCtxt(), input.length);
        return;
    }
    std::string_view written;
    Time copy(buffer, written);
    copy.clear();
    for (std::size_t i = 0; i < getters.size(); ++i) {
        require(std::invoke(setters[i], copy, std::invoke(getters[i], time)) == 0);
    }
    const Time read_again(buffer, written);
    Time same(buffer, written);
    for (const auto get : getters) {
        require(std::invoke(get, copy) == std::invoke(get, time));
        require(written.empty() || std::invoke(get, same) == std::invoke(get, time));
    }
    std::array<char, 32> terminated{};
    const int length = copy.getTimeStringLen();
    require((length < 0) == written.empty());
    if (length >= 0) {
        require(copy.getTimeString(terminated.data(), terminated.size()) == 0 &&
                terminated.data() == written);
    }
}

void check_integer_text(ByteView input) {
    ASN1CTXT ctxt;
    const std::string_view text = text_of(input);
    ASN1BigInt number;
    const bool is_number = rtBigIntSetStr(ctxt, number, text, 0) == 0;
    if (is_number) {
        require(number.magnitude.size() == 1 || number.magnitude.front() != 0);
    } else {
        check_failure(ctxt, input.length);
    }
    if (const auto octets = ASN1TInteger::parse(text)) {
        require(is_number && ASN1TInteger(view(*octets)).text() == text);
        require(number.negative == ((octets->front() & 0x80) != 0));
    }
    if (!input.empty()) {
        const ASN1TInteger integer(input);
        const auto octets = ASN1TInteger::parse(integer.text());
        require(octets && view(*octets) == input);
        const auto fits = integer.to_int32();
        const auto saturated = integer.to_uint32_saturated();
        require(!fits || (*fits < 0) == !saturated);
        require(!fits || !saturated || static_cast<std::uint32_t>(*fits) == *saturated);
    }
}

void check_object_identifier(ByteView input) {
    if (!ASN1TObjId::well_formed(input)) {
        return;
    }
    ASN1OBJID arcs;
    std::array<char, 11 * ASN1OBJID::max_arcs> dotted{};
    if (ASN1TObjId(input).get_arcs(arcs)) {
        require(ASN1TObjId(input) == arcs);
        require(rtOidToStr(arcs, dotted.data(), dotted.size()) == std::strlen(dotted.data()));
        const Bytes element = norvane::testing::oid(dotted.data());
        require(element == norvane::testing::tlv(0x06, {input.begin(), input.end()}));
    }
}

void check_character_string(ByteView input) {
    ASN1CTXT ctxt;
    require(rtInitContext(ctxt) == 0);
    Tag tag{};
    std::uint32_t length = 0;
    if (xd_setp(ctxt, input.data, input.length, &tag, &length) < 0) {
        check_failure(ctxt, input.length);
        return;
    }
    std::string_view text;
    std::u16string_view bmp;
    std::u32string_view universal;
    WideString wide;
    if (xd_charstr(ctxt, tag, text) < 0) {
        check_failure(ctxt, input.length);
        return;
    }
    if (rtUTF8ToWCS(ctxt, text, wide) < 0) {
        check_failure(ctxt, static_cast<std::uint32_t>(text.size()));
        require(wide.empty());
    }
    if (tag == Tag::bmp_string && xd_16BitCharStr(ctxt, bmp) == 0) {
        require(bmp.size() * 2 == text.size());
    }
    if (tag == Tag::universal_string && xd_32BitCharStr(ctxt, universal) == 0) {
        require(universal.size() * 4 == text.size());
        const std::size_t before = wide.size();
        const bool converted = rtUCSToWCSString(ctxt, universal, wide) == 0;
        require(converted ? wide.size() >= before + universal.size() : wide.size() == before);
    }
}

void check_minimal_lengths(ByteView input) {
    constexpr std::uint32_t most_offsets = 512;
    ASN1CTXT ctxt;
    MinimalLengths minimal(input);
    if (ASN1Failure failure = minimal.measure(); failure.status != ASN1Status::ok) {
        require(rtErrSetData(ctxt, std::move(failure)) < 0);
        check_failure(ctxt, input.length);
        return;
    }
    const ByteView rewritten = minimal.rewrite(ctxt);
    require(minimal_lengths(ctxt, rewritten) == rewritten);
    std::uint32_t last = 0;
    for (std::uint32_t i = 0; i < std::min(rewritten.length, most_offsets); ++i) {
        const std::uint32_t offset = minimal.input_offset(i);
        require(offset >= last && offset < input.length);
        require(rewritten == input ? offset <= i : true);
        last = offset;
    }
}

// In the order of Asn1Check.
constexpr std::array checks{
    check_control_class<ASN1T_Certificate>,
    check_control_class<ASN1T_TBSCertificate>,
    check_control_class<ASN1T_CertificateList>,
    check_control_class<ASN1T_TBSCertList>,
    check_control_class<ASN1T_Name>,
    check_control_class<ASN1T_GeneralNames>,
    check_control_class<ASN1T_DistributionPointName>,
    check_control_class<ASN1T_AuthorityInfoAccessSyntax>,
    check_structure<ASN1T_SubjectKeyIdentifier>,
    check_structure<ASN1T_KeyUsage>,
    check_structure<ASN1T_BasicConstraints>,
    check_structure<ASN1T_CRLNumber>,
    check_structure<ASN1T_CRLReason>,
    check_structure<ASN1T_CRLDistributionPoints>,
    check_structure<ASN1T_IssuingDistributionPoint>,
    check_structure<ASN1T_AuthorityKeyIdentifier>,
    check_structure<ASN1T_ExtKeyUsageSyntax>,
    check_time<ASN1CUTCTime>,
    check_time<ASN1CGeneralizedTime>,
    check_integer_text,
    check_object_identifier,
    check_character_string,
    check_minimal_lengths,
};
static_assert(checks.size() == static_cast<std::size_t>(Asn1Check::count));

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size != 0) {
        checks[data[0] % checks.size()]({data + 1, static_cast<std::uint32_t>(size - 1)});
    }
    return 0;
}
