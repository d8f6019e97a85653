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
		constexpr double shortestMeasurement = 0.25; // seconds; what is in buffers at the start says nothing about the line
		constexpr auto betweenDrawings = std::chrono::milliseconds(50);

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

		/** A size that nobody told is reported as one byte. */
		bool isSizeKnown(double size)
		{
			return size > 1.5;
		}

		/** @return "12 s" or "3 min 20 s". */
		std::string inWords(double seconds)
		{
			const auto whole = static_cast<long>(std::min(seconds, 359999.0));
			return whole < 60 ? fmt::format("{} s", whole) : fmt::format("{} min {} s", whole / 60, whole % 60);
		}
	} // namespace

	std::string ProgressBar::amount(const Progress& progress)
	{
		if (!isSizeKnown(progress.size))
		{
			return fmt::format("{:.1f} MiB {}", progress.done / mebibyte, progress.direction);
		}
		constexpr int width = 30;
		const int filled = static_cast<int>(std::clamp(progress.percent, 0.0, 100.0) / 100 * width);
		return fmt::format("[{:<{}}] {:3.0f} % {} of {:.1f} MiB", std::string(static_cast<size_t>(filled), '#'), width, progress.percent,
			progress.direction, progress.size / mebibyte);
	}

	ProgressBar::ProgressBar()
	{
		if (!isatty(STDERR_FILENO))
		{
			return;
		}
		UObject* const target = UCorvaneBPLibrary::getCorvaneTarget();
		for (const Source& source : sources)
		{
			const FMulticastDelegateProperty* const event = Reflect::findEvent(target->GetClass(), source.event);
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
		const Clock::time_point now = Clock::now();
		if (!isDrawn || progress.done < firstDone)
		{
			firstTime = now;
			firstDone = progress.done;
		}
		else if (now - lastDrawn < betweenDrawings)
		{
			return;
		}
		lastDrawn = now;
		isDrawn = true;
		const double seconds = std::chrono::duration<double>(now - firstTime).count();
		fmt::print(stderr, "\r{}{}\033[K", amount(progress), speedAndTimeLeft(progress, seconds));
	}

	std::string ProgressBar::speedAndTimeLeft(const Progress& progress, double seconds) const
	{
		const double speed = seconds >= shortestMeasurement ? (progress.done - firstDone) / seconds : 0;
		if (speed <= 0)
		{
			return "";
		}
		const double left = std::max(progress.size - progress.done, 0.0);
		return fmt::format(", {:.1f} MiB/s", speed / mebibyte) +
			   (isSizeKnown(progress.size) ? fmt::format(", {} left", inWords(left / speed)) : "");
	}
} // namespace Program
