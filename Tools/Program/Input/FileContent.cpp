#include "FileContent.h"

#include "InputError.h"
#include "JsonValues.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fmt/format.h>
#include <memory>

namespace Program
{
	namespace
	{
		using Reflect::InputError;

		bool isUtf8(const std::string& text)
		{
			const Json quoted = text;
			return quoted == Json::parse(quoted.dump(-1, ' ', false, Json::error_handler_t::replace));
		}
	} // namespace

	/** Unlike a stream, this ends when a signal comes while nobody types anything. */
	std::string contentOf(const std::string& path)
	{
		const char* const name = path == "-" ? "/dev/stdin" : path.c_str();
		const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name, "rb"), std::fclose);
		std::string content;
		char piece[64 << 10];
		for (size_t number = 1; file && number > 0; content.append(piece, number))
		{
			number = std::fread(piece, 1, sizeof piece, file.get());
		}
		if (!file || std::ferror(file.get()))
		{
			throw InputError(fmt::format("cannot read '{}': {}", path, std::strerror(errno)));
		}
		return content;
	}

	std::string textMeantBy(const std::string& word)
	{
		if (!word.starts_with('@') || word.starts_with("@@"))
		{
			return word.starts_with('@') ? word.substr(1) : word;
		}
		std::string content = contentOf(word.substr(1));
		if (!isUtf8(content))
		{
			throw InputError(fmt::format("'{}' is no UTF-8 text; a request sends any file as a stream, by its path", word.substr(1)));
		}
		return content;
	}
} // namespace Program
