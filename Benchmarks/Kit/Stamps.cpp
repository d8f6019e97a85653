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
		{ return left-- > 0 ? std::optional(fmt::format("data: {}\n", nanosecondsNow())) : std::nullopt; };
	};
	return Lab::stream(makeSource, Lab::Milliseconds(1000 / piecesPerSecond), "text/event-stream");
}

void StampReader::take(std::string_view bytes)
{
	constexpr std::size_t prefixBytes = sizeof("data: ") - 1;
	const std::int64_t now = nanosecondsNow();
	unread += bytes;
	for (std::size_t end = unread.find('\n'); end != std::string::npos; end = unread.find('\n'))
	{
		const std::int64_t sent = std::stoll(unread.substr(prefixBytes, end - prefixBytes));
		microseconds.push_back(static_cast<double>(now - sent) * 1e-3);
		unread.erase(0, end + 1);
	}
}
