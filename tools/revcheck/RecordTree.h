#pragma once

#include "DecisionRecord.h"
#include "HtmlWriter.h"

namespace norvane {

/// The record as a tree that can be unfolded, with codes, values, objects and references. Branches
/// that came to what they were for are closed.
void write_tree(HtmlWriter& out, const DecisionRecord& record);

/// What was asked, of the cache and of the network, with how it ended.
void write_requests(HtmlWriter& out, const DecisionRecord& record);

/// All certificates and CRLs of the record under the numbers that the tree has for them, with whole
/// names and digests.
void write_objects(HtmlWriter& out, const DecisionRecord& record);

} // namespace norvane
