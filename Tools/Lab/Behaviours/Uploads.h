#pragma once

#include "Lab/Plans/Behaviour.h"

#include <optional>
#include <string>
#include <vector>

namespace Lab
{
	struct UploadOptions
	{
		double bytesPerSecond = 0; // 0 = as fast as it comes
		std::optional<Milliseconds> waits = {}; // before the first one is read
		std::optional<std::uint64_t> refusesAfter = {}; // bytes, with a status; the rest is not read
		int code = 413; // of such a refusal
		std::optional<std::uint64_t> hangsUpAfter = {}; // bytes, without an answer
		bool throwsAway = false; // nobody looks at the bytes, for measurements
	};
	/** Reads a body in a special way, and tells how many bytes it had. */
	Behaviour upload(UploadOptions options = {});

	/** A field or a file of a form. */
	struct FormPart
	{
		std::string name;
		std::string fileName; // empty = a field
		std::string type;
		std::string bytes;
	};
	/** @return the parts of a form, of either encoding; none for what is no form. */
	std::vector<FormPart> parseForm(const Request& request);
	/** Takes a form apart and tells, as JSON, what it held. */
	Behaviour form();
} // namespace Lab
