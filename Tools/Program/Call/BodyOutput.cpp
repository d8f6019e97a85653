#include "BodyOutput.h"

#include "Console.h"
#include "InputError.h"
#include "PinOutput.h"

#include <cerrno>
#include <cstring>
#include <fmt/format.h>
#include <unistd.h>

namespace Program
{
	namespace
	{
		/** The bytes, or else the text: downloads and uploads that are nodes have no bytes. */
		std::string_view bodyOf(const Json& pins)
		{
			for (const Json& value : pins)
			{
				if (value.is_binary())
				{
					const std::vector<std::uint8_t>& bytes = value.get_binary();
					return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
				}
			}
			const auto text = pins.find("dataString");
			if (text == pins.end())
			{
				throw Reflect::InputError("there is no body to write among what this returns");
			}
			return text->get_ref<const std::string&>();
		}
	} // namespace

	BodyOutput::BodyOutput(const std::string& outputPath)
		: path(outputPath)
		, file(path.empty() ? nullptr : std::fopen(path.c_str(), "ab"))
	{
		if (!path.empty() && !file)
		{
			throw Reflect::InputError(fmt::format("cannot write '{}': {}", path, std::strerror(errno)));
		}
	}

	void BodyOutput::write(std::string_view bytes)
	{
		std::FILE* const stream = file ? file.get() : stdout;
		if (file && !hasBegun && ftruncate(fileno(stream), 0) != 0 && errno != EINVAL) // devices have no size
		{
			fault = fault ? fault : errno;
		}
		hasBegun = true;
		const std::string fit = fitFor(stream, bytes);
		const bool isWritten = std::fwrite(fit.data(), 1, fit.size(), stream) == fit.size() && std::fflush(stream) == 0;
		fault = isWritten || fault ? fault : errno;
	}

	void BodyOutput::writeBodyOf(const Json& pins)
	{
		const std::string_view body = bodyOf(pins);
		const bool hasAnswer = !body.empty() || !isFailure(pins); // else what the file held is better than nothing
		if (!hasBegun && hasAnswer)
		{
			write(body);
		}
	}

	void BodyOutput::finish()
	{
		if (file && fault) // what standard output has met is told at the end of the program
		{
			throw std::runtime_error(fmt::format("cannot write '{}': {}", path, std::strerror(fault)));
		}
	}
} // namespace Program
