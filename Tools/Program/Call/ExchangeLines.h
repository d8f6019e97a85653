#pragma once

#include "CallFrame.h"
#include "JsonValues.h"

namespace Program
{
	/** Tells on standard error what a call asks for, and what it is answered; values that may be secret are hidden. */
	void tellRequest(const Reflect::Function& function, const Reflect::CallFrame& frame);
	/** @param pins  of a result. */
	void tellAnswer(const Json& pins);
} // namespace Program
