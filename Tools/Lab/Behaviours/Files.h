#pragma once

#include "Lab/Plans/Behaviour.h"

#include <optional>
#include <string>

namespace Lab
{
	/** What becomes of a request for a part. */
	enum class Ranges
	{
		Honest,
		Ignored, // the whole file comes, as 200
		WrongStart, // the part begins one byte later than asked, and says so
		WrongBytes, // the part begins one byte earlier than asked, if there is one, and does not say so
		WrongTotal, // the part is right, the size of the whole is said to be one byte more
		NoTotal, // the size of the whole is said to be unknown
		OtherValidator, // the part is right, its entity tag is that of another file
		Refused // 416, with the size of the whole
	};

	enum class Validator
	{
		Strong,
		Weak,
		None
	};

	/** Another file takes the place of the first one. */
	struct FileChange
	{
		ContentPtr to;
		int request = 2; // of one method and target: the first one that sees it
		std::optional<std::uint64_t> byte = {}; // of the file; that request sees the change here, those after it the new file
	};

	struct FileOptions
	{
		Ranges ranges = Ranges::Honest;
		Validator validator = Validator::Strong; // as an entity tag
		bool tellsTime = true; // as Last-Modified
		bool heedsIfRange = true; // false = a part is sent even of another file than the client has
		std::string type = "application/octet-stream";
		std::optional<FileChange> change = {};
	};

	/** A file that may be asked for in parts. */
	Behaviour file(ContentPtr content, FileOptions options = {});
	Behaviour file(std::string bytes, FileOptions options = {});

	/** @return the entity tag that such a file has. */
	std::string entityTag(const Content& content, Validator validator = Validator::Strong);
} // namespace Lab
