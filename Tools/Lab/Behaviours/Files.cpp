#include "Lab/Behaviours/Files.h"

#include <algorithm>
#include <charconv>

namespace Lab
{
	namespace
	{
		struct ByteRange
		{
			std::uint64_t first = 0;
			std::uint64_t last = 0;
		};

		/** A file as one request finds it. */
		struct Version
		{
			ContentPtr content;
			const char* time;
		};

		constexpr const char* firstTime = "Thu, 01 Jan 2026 08:00:00 GMT";
		constexpr const char* changedTime = "Fri, 02 Jan 2026 08:00:00 GMT";

		std::optional<std::uint64_t> wholeNumberIn(std::string_view text)
		{
			std::uint64_t number = 0;
			const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
			return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
		}

		/** @return nothing for what is no single range of bytes: it is as if nobody had asked. */
		std::optional<ByteRange> parseRange(std::string_view header, std::uint64_t size)
		{
			constexpr std::string_view unit = "bytes=";
			const std::size_t dash = header.find('-');
			if (!header.starts_with(unit) || dash == header.npos)
			{
				return {};
			}
			const auto first = wholeNumberIn(header.substr(unit.size(), dash - unit.size()));
			const auto last = wholeNumberIn(header.substr(dash + 1));
			const bool isOpen = dash + 1 == header.size();
			if (dash == unit.size() && last)
			{
				return ByteRange{size - std::min(*last, size), size - 1};
			}
			return first && (last || isOpen) ? std::optional(ByteRange{*first, std::min(last.value_or(endless), size - 1)}) : std::nullopt;
		}

		Version versionFor(const Request& request, const ContentPtr& content, const FileOptions& options)
		{
			if (!options.change || request.visit < options.change->request)
			{
				return {content, firstTime};
			}
			if (options.change->byte && request.visit == options.change->request)
			{
				return {changingAt(content, *options.change->byte, options.change->to), firstTime};
			}
			return {options.change->to, changedTime};
		}

		bool isCurrent(std::string_view validator, const Version& version, const FileOptions& options)
		{
			const bool isTag = validator.starts_with('"') || validator.starts_with("W/");
			return isTag ? options.validator == Validator::Strong && validator == entityTag(*version.content)
						 : options.tellsTime && validator == version.time;
		}

		/** @return the part to send; nothing = the whole. */
		std::optional<ByteRange> wantedPart(const Request& request, const Version& version, const FileOptions& options)
		{
			const std::string_view condition = request.header("If-Range");
			if (options.ranges == Ranges::Ignored ||
				(options.heedsIfRange && !condition.empty() && !isCurrent(condition, version, options)))
			{
				return {};
			}
			return parseRange(request.header("Range"), version.content->size());
		}

		std::string contentRange(const ByteRange& part, std::uint64_t size, Ranges ranges)
		{
			const std::string total = ranges == Ranges::NoTotal ? "*" : std::to_string(ranges == Ranges::WrongTotal ? size + 1 : size);
			return "bytes " + std::to_string(part.first) + '-' + std::to_string(part.last) + '/' + total;
		}

		void sendPart(Plan& plan, ByteRange part, const ContentPtr& content, Ranges ranges)
		{
			const std::uint64_t size = content->size();
			if (part.first >= size || part.first > part.last || ranges == Ranges::Refused)
			{
				plan.status = 416;
				plan.setHeader("Content-Range", "bytes */" + std::to_string(size));
				plan.setText("There is no such part.\n");
				return;
			}
			part.first = ranges == Ranges::WrongStart ? std::min(part.first + 1, part.last) : part.first;
			plan.status = 206;
			plan.setHeader("Content-Range", contentRange(part, size, ranges));
			const bool isMoved = ranges == Ranges::WrongBytes && part.first > 0;
			plan.content = partOf(content, part.first - isMoved, part.last - part.first + 1);
		}

		void send(const Request& request, Plan& plan, const Version& version, const FileOptions& options)
		{
			const std::optional<ByteRange> part = wantedPart(request, version, options);
			plan.content = version.content;
			plan.setHeader("Content-Type", options.type);
			plan.setHeader("Accept-Ranges", options.ranges == Ranges::Ignored ? "none" : "bytes");
			if (options.validator != Validator::None)
			{
				const bool isOther = part && options.ranges == Ranges::OtherValidator;
				plan.setHeader("ETag", isOther ? "\"another-file\"" : entityTag(*version.content, options.validator));
			}
			if (options.tellsTime)
			{
				plan.setHeader("Last-Modified", version.time);
			}
			const std::string* const tag = findHeader(plan.headers, "ETag");
			if (tag && request.header("If-None-Match") == *tag)
			{
				plan.status = 304;
			}
			else if (part)
			{
				sendPart(plan, *part, version.content, options.ranges);
			}
		}
	} // namespace

	Behaviour file(ContentPtr content, FileOptions options)
	{
		return Behaviour([content = std::move(content), options = std::move(options)](const Request& request, Plan& plan)
			{ send(request, plan, versionFor(request, content, options), options); });
	}

	Behaviour file(std::string bytes, FileOptions options)
	{
		return file(bytesContent(std::move(bytes)), std::move(options));
	}

	std::string entityTag(const Content& content, Validator validator)
	{
		return (validator == Validator::Weak ? "W/\"" : "\"") + std::to_string(content.fingerprint()) + '"';
	}
} // namespace Lab
