#include "ProgressBar.h"

#include "Console.h"
#include "CorvaneBPLibrary.h"
#include "CorvaneTransferReport.h"
#include "CorvaneUpload.h"
#include "CorvaneUploadResumable.h"
#include "Reflection.h"

#include <fmt/core.h>

#include <algorithm>

namespace Program
{
	namespace
	{
		constexpr double mebibyte = 1 << 20;
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
	} // namespace

	std::string ProgressBar::amount(const Progress& progress)
	{
		return isSizeKnown(progress.size)
				   ? fmt::format("{:3.0f} % {} of {}", progress.percent, progress.direction, sizeInWords(progress.size))
				   : fmt::format("{} {}", sizeInWords(progress.done), progress.direction);
	}

	ProgressBar::ProgressBar(bool tellsInLines)
		: asLines(tellsInLines)
		, isShown(asLines || isTerminal(stderr))
	{
		if (!isShown)
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
					tell({source.direction, number(source.percentPin), number(source.sizePin) * source.unit,
						number(source.donePin) * source.unit});
				});
		}
	}

	ProgressBar::~ProgressBar()
	{
		if (isDrawn)
		{
			drawStatus("");
		}
	}

	ProgressBar::Progress ProgressBar::moved(const char* direction, int64 size, int64 done)
	{
		const auto whole = static_cast<double>(size);
		const double there = size < 0 ? static_cast<double>(done) : std::min(static_cast<double>(done), whole); // some went twice
		return {direction, size > 0 ? 100 * there / whole : 0, whole, there};
	}

	void ProgressBar::watch(UObject& node)
	{
		const FMulticastDelegateProperty* const event = Reflect::findEvent(node.GetClass(), "OnProgress");
		const bool reports = event && event->Signature->Parameters.size() == 1 &&
							 &event->Signature->Parameters[0].Type() == &PropertyTypeOf<FCorvaneTransferReport>();
		if (!isShown || !reports)
		{
			return;
		}
		const char* const direction = Cast<UCorvaneUpload>(&node) || Cast<UCorvaneUploadResumable>(&node) ? "sent" : "received";
		taps.emplace_back(node, *event,
			[this, direction](const Json& pins)
			{
				const Json& report = pins.front();
				const auto number = [&report](const char* field) { return report.at(field).get<int64>(); };
				tell(moved(
					direction, number("TotalBytes"), number("TakenOverBytes") + number("TransferredBytes") - number("RepeatedBytes")));
			});
	}

	void ProgressBar::tell(const Progress& progress)
	{
		if (!isShown)
		{
			return;
		}
		const Clock::time_point now = Clock::now();
		rate.note(progress.done);
		const double left = isSizeKnown(progress.size) ? std::max(progress.size - progress.done, 0.0) : -1;
		const std::string text = amount(progress) + rate.inWords(left);
		if (asLines)
		{
			complain(text);
		}
		else if (!isDrawn || now - lastDrawn >= betweenDrawings)
		{
			lastDrawn = now;
			isDrawn = true;
			draw(progress, text);
		}
	}

	/** A line that is too long would wrap, and the next one could not be drawn over it: the bar takes what the words leave. */
	void ProgressBar::draw(const Progress& progress, const std::string& text)
	{
		constexpr size_t widest = 30;
		constexpr size_t narrowest = 5;
		constexpr size_t frame = 3; // brackets and a space
		const size_t room = terminalSize().columns - 1; // terminals wrap at the last column
		const size_t left = room > text.size() + frame ? room - text.size() - frame : 0;
		std::string bar;
		if (isSizeKnown(progress.size) && left >= narrowest)
		{
			const size_t width = std::min(left, widest);
			const auto filled = static_cast<size_t>(std::clamp(progress.percent, 0.0, 100.0) / 100 * static_cast<double>(width));
			bar = fmt::format("[{:<{}}] ", std::string(filled, '#'), width);
		}
		drawStatus((bar + text).substr(0, room));
	}
} // namespace Program
