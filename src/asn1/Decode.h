#pragma once

#include "asn1/MinimalLengths.h"
#include "asn1/Reader.h"

#include <string>
#include <utility>

namespace norvane {

/// Has `decode_fields(Reader&)` read `input`, which must be one element. Views that it takes point
/// into `input`; but where a length is not in its minimal form it is called a second time, over a
/// copy with minimal lengths in the memory of `ctxt`. So decoders know one form of lengths only,
/// and what they keep of the encoding is fit to be handed out as a re-encoding.
///
/// Returns 0, or a negative status with, unless `report` is silent, the failure in `ctxt`; its
/// offset counts in `input` as it was given. Time and memory are linear in the length of the input
/// if those of `decode_fields` are.
template <class DecodeFields>
[[nodiscard]] int decode_with(ASN1CTXT& ctxt, ByteView input, DecodeReport report,
                              DecodeFields&& decode_fields) {
    const auto fail = [&](ASN1Failure failure) {
        return report == DecodeReport::silent ? code(failure.status)
                                              : rtErrSetData(ctxt, std::move(failure));
    };
    if (input.length > max_input_length) {
        return fail({.status = ASN1Status::bad_length,
                     .element = "input",
                     .offset = 0,
                     .expected = std::to_string(max_input_length) + " octets at most",
                     .found = std::to_string(input.length)});
    }
    const auto attempt_to_decode = [&](DecodeAttempt& attempt) {
        Reader reader(attempt, attempt.input, nullptr);
        decode_fields(reader);
        reader.finish();
        return code(attempt.status);
    };
    DecodeAttempt as_given{ctxt, input, report};
    int status = attempt_to_decode(as_given);
    if (!as_given.lengths_not_minimal) {
        return status;
    }
    MinimalLengths minimal(input);
    if (ASN1Failure failure = minimal.measure(); failure.status != ASN1Status::ok) {
        return fail(std::move(failure));
    }
    DecodeAttempt rewritten{ctxt, minimal.rewrite(ctxt), report};
    status = attempt_to_decode(rewritten);
    if (rewritten.failed() && report == DecodeReport::failure) {
        ctxt.failure.offset = minimal.input_offset(ctxt.failure.offset);
    }
    return status;
}

/// Decodes `input` into `value` as above; on failure `value` is empty.
template <class T>
[[nodiscard]] int decode_element(ASN1CTXT& ctxt, ByteView input, T& value,
                                 DecodeReport report = DecodeReport::failure) {
    const int status = decode_with(ctxt, input, report, [&value](Reader& in) {
        value = T{};
        decode(in, value);
    });
    if (status < 0) {
        value = T{};
    }
    return status;
}

} // namespace norvane
