// Requests that come to the lab's origin: however they are cut, they are the same, and each is what its own lines say.

#include "Lab/Wire/RequestReader.h"

#include "Fuzz.h"

#include <stdexcept>
#include <vector>

namespace
{
	using namespace Lab;

	struct FRead
	{
		std::string Head, Target, Body;
		bool operator==(const FRead&) const = default;
	};

	/** All requests whose body is there, and in the end one without anything for those that are none. */
	std::vector<FRead> ReadAll(std::string_view Bytes, std::string_view Cuts)
	{
		std::vector<FRead> Requests;
		RequestReader Reader;
		bool bInBody = false;
		const Intake Whole;
		const auto ReadMore = [&]
		{
			while (bInBody || Reader.readHead())
			{
				bInBody = !Reader.readBody(Whole, 1 << 20);
				if (bInBody)
				{
					return;
				}
				Reader.endBody();
				const Request& Request = Reader.request();
				HOST_CHECK(Request.isChunked || Request.bodyBytes == Request.announced.value_or(0));
				HOST_CHECK(!Request.method.empty() && Request.head.find(Request.target) < Request.head.find('\n'));
				Requests.push_back({Request.head, Request.target, Request.body});
			}
		};
		try
		{
			CutUp(Bytes, Cuts,
				[&](const std::string& Piece)
				{
					Reader.add(Piece);
					ReadMore();
				});
		}
		catch (const std::invalid_argument& Fault)
		{
			HOST_CHECK(*Fault.what() != '\0');
			Requests.emplace_back();
		}
		return Requests;
	}
} // namespace

FUZZ(Input)
{
	const std::string_view Cuts = Input.Field();
	const std::string_view Bytes = Input.Rest();
	// Which of the requests in front of a broken one are told first is a matter of cuts, and so only that there is one.
	HOST_CHECK(ReadAll(Bytes, Cuts) == ReadAll(Bytes, {}));
	for (const Header& Pair : parsePairs(Bytes))
	{
		HOST_CHECK(Pair.name.size() + Pair.value.size() <= Bytes.size());
	}
}
