#pragma once

#include "CallFrame.h"
#include "Commands.h"

namespace Program
{
	/** @return the pins that a call may set; outputs are not among them. */
	std::vector<std::string> settablePins(const UFunction& function);

	/**
	 * Sets the pins of a call as the command line says. Throws InputError for a pin that is unknown, set twice, or cannot hold
	 * its value, and for a request that could not be sent: without a needed pin, to no address, of files that cannot be read.
	 */
	void setPins(const Reflect::Function& function, Reflect::CallFrame& frame, const CallOptions& options);
} // namespace Program
