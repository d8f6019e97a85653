#include "DownloadSummary.h"

#include "FileFunctionsCorv.h"
#include "PinOutput.h"

#include <cmath>
#include <fmt/format.h>

namespace Program
{
	namespace
	{
		constexpr auto absolute = EFileFunctionsCorvDirectoryType::E_ad;

		/** Reading a large file again may take longer than its download did. */
		Json md5Of(const std::string& path, int64 size)
		{
			constexpr int64 mostBytes = 256 << 20;
			if (size > mostBytes)
			{
				return fmt::format("corvane call getMD5FromFile directoryType=E_ad filePath='{}'", path);
			}
			bool isRead = false;
			FString sum;
			UFileFunctionsCorv::getMD5FromFile(absolute, Reflect::toFString(path), isRead, sum);
			return isRead ? Json(Reflect::toUtf8(sum)) : Json();
		}
	} // namespace

	std::optional<DownloadSummary> DownloadSummary::of(const Reflect::CallFrame& frame)
	{
		const std::optional<size_t> pin = frame.findInput("filePathWithFileName");
		const std::optional<size_t> directory = frame.findInput("directoryType");
		if (!pin || !directory)
		{
			return std::nullopt;
		}
		const auto type = static_cast<EFileFunctionsCorvDirectoryType>(*static_cast<const uint8*>(frame[*directory].get()));
		return DownloadSummary(
			Reflect::toUtf8(UFileFunctionsCorv::getCleanDirectory(type, *static_cast<const FString*>(frame[*pin].get()))));
	}

	Json DownloadSummary::replaceBody(const Json& pins) const
	{
		const double seconds = std::chrono::duration<double>(Clock::now() - begun).count();
		const int64 size = UFileFunctionsCorv::fileSize(absolute, Reflect::toFString(path));
		Json told = {{"path", path}, {"size", size < 0 ? Json() : Json(size)}, {"seconds", std::round(seconds * 1000) / 1000}};
		if (size >= 0 && !isFailure(pins))
		{
			told["MD5"] = md5Of(path, size);
		}
		for (const auto& [name, value] : pins.items())
		{
			if (name != "dataString" && name != "dataArray" && name != "byteData")
			{
				told[name] = value;
			}
		}
		return told;
	}
} // namespace Program
