#pragma once

#include "CrlAttempts.h"
#include "DecisionRecord.h"
#include "HtmlWriter.h"

#include <cstddef>
#include <span>
#include <string>

namespace norvane {

/// Draws the certificate of a question and its issuer.
void draw_issuer(HtmlWriter& out, const DecisionRecord& record, std::size_t question);

/// Draws a CRL, its signer and the path of that to the root, as far as the attempt has come, and at
/// what it failed if it did.
///
/// @param title what the page calls the CRL.
void draw_attempt(HtmlWriter& out, const DecisionRecord& record, const CrlAttempt& attempt,
                  const std::string& title);

} // namespace norvane
