#pragma once

#include "CallFrame.h"

namespace Program
{
	/**
	 * Finds what would keep a request from being sent, in the words of the person who wrote it, before anything happens.
	 * Functions that make no request pass. Throws InputError.
	 */
	void checkRequest(const Reflect::Function& function, const Reflect::CallFrame& frame);
} // namespace Program
