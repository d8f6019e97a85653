#include "ProgressBar.h"

#include "CorvaneBPLibrary.h"
#include "Reflection.h"

#include <fmt/core.h>

#include <algorithm>
#include <unistd.h>

namespace Program
{
	namespace
	{
		struct Source
		{
			const char* event;
			const char* pin;
			const char* direction;
		};
		constexpr Source sources[] = {
			{"onhttpFileDownloadDelegate", "percentDownload", "received"}, {"onhttpFileUploadDelegate", "percentUpload", "sent"}};
	} // namespace

	ProgressBar::ProgressBar()
	{
		if (!isatty(STDERR_FILENO))
		{
			return;
		}
		UObject* const target = UCorvaneBPLibrary::getCorvaneTarget();
		for (const Source& source : sources)
		{
			const FMulticastDelegateProperty* const event = Script::findEvent(target->GetClass(), source.event);
			HOST_CHECK(event);
			taps.emplace_back(
				*target, *event, [this, &source](const Json& pins) { draw(source.direction, pins.at(source.pin).get<double>()); });
		}
	}

	ProgressBar::~ProgressBar()
	{
		if (isDrawn)
		{
			fmt::print(stderr, "\r\033[K");
		}
	}

	void ProgressBar::draw(const char* direction, double percent)
	{
		constexpr int width = 40;
		const int filled = static_cast<int>(std::clamp(percent, 0.0, 100.0) / 100 * width);
		fmt::print(stderr, "\r[{:<{}}] {:3.0f} % {}\033[K", std::string(static_cast<size_t>(filled), '#'), width, percent, direction);
		isDrawn = true;
	}
} // namespace Program
