#pragma once

#include "JsonValues.h"

namespace Program
{
	/** Writes pins to standard output. @param asJson  one JSON object, bytes in base64; otherwise a line per pin, bytes by their number. */
	void printPins(const Json& pins, bool asJson);
	/** @return a value as JSON in one line, without the end of that line. */
	std::string asJsonText(const Json& value);

	/** @return whether pins report a failure: a statusCode of 0 or from 400 on, or a false success. */
	bool isFailure(const Json& pins);
} // namespace Program
