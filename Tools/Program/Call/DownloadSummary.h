#pragma once

#include "CallFrame.h"
#include "JsonValues.h"

#include <chrono>
#include <optional>
#include <string>

namespace Program
{
	/** A download to disk as it is told when it has ended: the file instead of its content. Thread: game thread. */
	class DownloadSummary
	{
	public:
		/** @param frame  with its pins set. @return nothing when the function downloads to no file. */
		static std::optional<DownloadSummary> of(const Reflect::CallFrame& frame);

		/** @return path, size, seconds and MD5, and then the pins of a result but for those of the body. */
		Json replaceBody(const Json& pins) const;

	private:
		using Clock = std::chrono::steady_clock;

		explicit DownloadSummary(std::string target)
			: path(std::move(target))
		{
		}

		std::string path; // absolute
		Clock::time_point begun = Clock::now();
	};
} // namespace Program
