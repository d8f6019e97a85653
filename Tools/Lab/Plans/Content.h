#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

namespace Lab
{
	/** The size of what has no end. */
	constexpr std::uint64_t endless = std::numeric_limits<std::int64_t>::max();

	/** Bytes that answers send. They never change, so any number of answers may send them at once. Thread: any. */
	class Content
	{
	public:
		virtual ~Content() = default;
		virtual std::uint64_t size() const = 0;
		/** @return bytes from a place below the size on: at least one, at most so many. They live as long as the content. */
		virtual std::string_view at(std::uint64_t place, std::size_t most) const = 0;
		/** The same for the same bytes, and not for others: what a validator is made of. */
		virtual std::uint64_t fingerprint() const = 0;
	};
	using ContentPtr = std::shared_ptr<const Content>;

	ContentPtr bytesContent(std::string bytes);
	/** A file as it is now, sent from the system's own memory. Throws std::system_error when it cannot be read. */
	ContentPtr fileContent(const std::string& path);
	/** Bytes that differ everywhere by place, of any size, in next to no memory. @param seed  other bytes for another one. */
	ContentPtr madeContent(std::uint64_t size, unsigned seed = 0);
	/** The same text again and again. */
	ContentPtr repeatedContent(std::string text, std::uint64_t size = endless);
	/** A part of other content, which has to reach so far. */
	ContentPtr partOf(ContentPtr whole, std::uint64_t first, std::uint64_t size);
	/** The begin of one, the end of another: what a reader gets whose file changes under its hands. */
	ContentPtr changingAt(ContentPtr before, std::uint64_t place, ContentPtr after);

	/** All bytes, for what has to be seen as a whole. Throws std::length_error for content without end. */
	std::string wholeOf(const Content& content);
} // namespace Lab
