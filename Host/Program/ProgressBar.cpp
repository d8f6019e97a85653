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
		constexpr double mebibyte = 1 << 20;

		struct Source
		{
			const char* event;
			const char* percentPin;
			const char* sizePin;
			const char* donePin;
			double unit; // bytes that the two pins before count in
			const char* direction;
		};
		constexpr Source sources[] = {
			{"onhttpFileDownloadDelegate", "percentDownload", "size", "megaBytesReceived", mebibyte, "received"},
			{"onhttpFileUploadDelegate", "percentUpload", "size", "bytesSent", 1, "sent"},
		};

		/** @return "12 s" or "3 min 20 s". */
		std::string inWords(double seconds)
		{
			const auto whole = static_cast<long>(std::min(seconds, 359999.0));
			return whole < 60 ? fmt::format("{} s", whole) : fmt::format("{} min {} s", whole / 60, whole % 60);
		}
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
			taps.emplace_back(*target, *event,
				[this, &source](const Json& pins)
				{
					const auto number = [&pins](const char* pin) { return pins.at(pin).get<double>(); };
					draw({source.direction, number(source.percentPin), number(source.sizePin) * source.unit,
						number(source.donePin) * source.unit});
				});
		}
	}

	ProgressBar::~ProgressBar()
	{
		if (isDrawn)
		{
			fmt::print(stderr, "\r\033[K");
		}
	}

	void ProgressBar::draw(const Progress& progress)
	{
		constexpr int width = 30;
		const int filled = static_cast<int>(std::clamp(progress.percent, 0.0, 100.0) / 100 * width);
		fmt::print(stderr, "\r[{:<{}}] {:3.0f} % {} of {:.1f} MiB{}\033[K", std::string(static_cast<size_t>(filled), '#'), width,
			progress.percent, progress.direction, progress.size / mebibyte, speedAndTimeLeft(progress));
		isDrawn = true;
	}

	std::string ProgressBar::speedAndTimeLeft(const Progress& progress)
	{
		const Clock::time_point now = Clock::now();
		if (!isDrawn || progress.done < firstDone)
		{
			firstTime = now;
			firstDone = progress.done;
		}
		const double seconds = std::chrono::duration<double>(now - firstTime).count();
		const double speed = seconds > 0 ? (progress.done - firstDone) / seconds : 0;
		if (speed <= 0)
		{
			return "";
		}
		const double left = std::max(progress.size - progress.done, 0.0);
		return fmt::format(", {:.1f} MiB/s, {} left", speed / mebibyte, inWords(left / speed));
	}
} // namespace Program
