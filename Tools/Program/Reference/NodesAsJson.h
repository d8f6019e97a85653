#pragma once

#include "JsonValues.h"
#include "ReferencePages.h"

namespace Program
{
	/** @return a node or function for machines: names, texts, pins with types, defaults and values, outcomes, examples. */
	Json toJson(const Reference& reference, const NodeFacts& facts);
} // namespace Program
