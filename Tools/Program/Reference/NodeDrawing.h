#pragma once

#include "NodeFacts.h"

namespace Program
{
	/**
	 * A node as the editor shows it: a title coloured by kind, execution pins, data pins coloured by type with their
	 * defaults; inputs that may stay unconnected say so.
	 * @return one SVG element with its size in pixels, readable on light and dark pages.
	 */
	std::string drawNode(const NodeFacts& facts);
} // namespace Program
