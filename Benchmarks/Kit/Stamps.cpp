#include "Kit/Stamps.h"

#include "Lab/Behaviours/Answers.h"

#include <chrono>
#include <fmt/format.h>

namespace
{
	std::int64_t nanosecondsNow()
	{
		return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
	}
} // namespace

Lab::Behaviour stamps(double piecesPerSecond, int pieces)
{
	const auto makeSource = [pieces](const Lab::Request&)
	{
		return [left = pieces]() mutable -> std::optional<std::string>
		{ return left-- > 0 ? std::optional(fmt::format("data: {}\n\n", nanosecondsNow())) : std::nullopt; };
	};
	return Lab::stream(makeSource, Lab::Milliseconds(1000 / piecesPerSecond), "text/event-stream");
}

void StampReader::take(std::string_view bytes)
{
	constexpr std::size_t prefixBytes = sizeof("data: ") - 1;
	unread += bytes;
	for (std::size_t end = unread.find('\n'); end != std::string::npos; end = unread.find('\n'))
	{
		if (end > 0) // the empty lines end events
		{
			takeStamp(std::stoll(unread.substr(prefixBytes, end - prefixBytes)));
		}
		unread.erase(0, end + 1);
	}
}

void StampReader::takeStamp(std::int64_t sent)
{
	microseconds.push_back(static_cast<double>(nanosecondsNow() - sent) * 1e-3);
}
