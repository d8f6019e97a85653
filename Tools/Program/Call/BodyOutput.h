#pragma once

#include "JsonValues.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace Program
{
	/** Where the body of an answer goes, without anything else: standard output or a file. Thread: game thread. */
	class BodyOutput
	{
	public:
		/**
		 * A file is opened, and keeps what is in it until there is something to write.
		 * @param path  empty = standard output. Throws InputError when it cannot be opened.
		 */
		explicit BodyOutput(const std::string& path);

		/** Writes at once what has come of the body. */
		void write(std::string_view bytes);
		/** Writes the body of a result, unless it has been written as it came. Throws InputError when the result has none. */
		void writeBodyOf(const Json& pins);
		bool isBroken() const { return fault != 0; }
		/** Throws when something could not be written. */
		void finish();

	private:
		struct Closer
		{
			void operator()(std::FILE* file) const { std::fclose(file); }
		};

		const std::string path;
		const std::unique_ptr<std::FILE, Closer> file; // null = standard output
		bool hasBegun = false;
		int fault = 0; // the first one, an errno
	};
} // namespace Program
