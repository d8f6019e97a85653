#pragma once

#include "Lab/Plans/Behaviour.h"

#include <optional>
#include <string>

namespace Lab
{
	struct TusOptions
	{
		bool tells = false; // every answer names the extensions; else only that to OPTIONS does
		std::optional<std::uint64_t> mostBytes = {}; // of one upload; a longer one is refused with 413
		std::optional<Milliseconds> expiresAfter = {}; // since it was begun: then it is gone, with 410
		std::string host = {}; // "localhost" or "localhost:8000", where uploads are said to be; empty = the same
	};

	/**
	 * A server of resumable uploads, for a place such as "/files*": POST creates one, with bytes of it or without, HEAD tells how
	 * far it is, PATCH goes on and heeds a sum, DELETE ends it, GET shows what came. Bytes count also when their connection breaks.
	 * Unlike others this behaviour has a memory, which its copies share.
	 */
	Behaviour tus(TusOptions options = {});
} // namespace Lab
