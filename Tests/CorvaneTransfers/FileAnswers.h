#pragma once

#include "RawServer.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>

/** What a server has under an address. */
struct Version
{
	std::string bytes;
	std::string headers; // validators, lines with their line ends
};

enum class Ranges
{
	Honest,
	/** Sends the part without looking at If-Range. */
	WithoutIfRange,
	Ignored,
	/** Sends another part than the one that was asked for, and says so, or does not. */
	Shifted,
	ShiftedInSecret,
	ErrorPage
};

inline std::int64_t firstByteOf(const std::string& head)
{
	const std::string range = headerOf(head, "Range"); // "bytes=N-"
	std::int64_t first = 0;
	std::from_chars(range.data() + std::min<size_t>(range.size(), 6), range.data() + range.size(), first);
	return first;
}

inline std::string partOf(const Version& version, std::int64_t first, std::int64_t told)
{
	const auto size = static_cast<std::int64_t>(version.bytes.size());
	if (first >= size)
	{
		return answer(416, "", "Content-Range: bytes */" + std::to_string(size) + "\r\n" + version.headers);
	}
	const std::string range = "bytes " + std::to_string(told) + "-" + std::to_string(told + size - first - 1) + "/" + std::to_string(size);
	return answer(206, version.bytes.substr(static_cast<size_t>(first)), "Content-Range: " + range + "\r\n" + version.headers);
}

inline bool isOfVersion(const std::string& head, const Version& version)
{
	const std::string wanted = headerOf(head, "If-Range");
	return wanted.empty() || version.headers.find(": " + wanted + "\r\n") != std::string::npos;
}

inline std::string answerOf(const Version& version, Ranges ranges, const std::string& head)
{
	const std::int64_t first = firstByteOf(head);
	const bool isPart = !headerOf(head, "Range").empty();
	const std::string whole = answer(200, version.bytes, version.headers);
	switch (ranges)
	{
	case Ranges::ErrorPage:
		return answer(404, std::string(100'000, 'x'));
	case Ranges::Shifted:
		return isPart ? partOf(version, first + 10, first + 10) : whole;
	case Ranges::ShiftedInSecret:
		return isPart ? partOf(version, first + 10, first) : whole;
	case Ranges::Honest:
		return isPart && isOfVersion(head, version) ? partOf(version, first, first) : whole;
	case Ranges::WithoutIfRange:
		return isPart ? partOf(version, first, first) : whole;
	default:
		return whole;
	}
}
