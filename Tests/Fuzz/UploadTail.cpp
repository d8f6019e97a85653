// The tail of an upload in the user's file: found when it is there, and nothing else is ever taken for it.

#include "Rules/UploadTail.h"

#include "Fuzz.h"
#include "Rules/Multipart.h"

namespace
{
	/** The end of a file as it is looked at, in memory of its own. */
	struct FEnd
	{
		TArray<uint8> Bytes;
		int64 FileSize;

		/** @param Before  bytes of the file in front of those that are given. */
		FEnd(std::string_view All, int64 Before)
			: Bytes(ToArray(All.substr(All.size() - std::min<size_t>(All.size(), CorvaneRules::longestUploadTail))))
			, FileSize(Before + static_cast<int64>(All.size()))
		{
		}
		int64 SizeBefore() const { return CorvaneRules::sizeBeforeUpload(Bytes.GetData(), Bytes.Num(), FileSize); }
		bool IsOwn() const { return CorvaneRules::endsInOwnTail(Bytes.GetData(), Bytes.Num(), FileSize); }
	};

	std::string OwnTail(int64 Size)
	{
		return utf8(CorvaneRules::closingDelimiter(CorvaneRules::boundaryToken(Size)));
	}

	/** What an upload appends is known again, and its size is told. */
	void AppendAndFind(const std::string& Content, int64 Before)
	{
		const int64 Size = Before + static_cast<int64>(Content.size());
		const FEnd End(Content + OwnTail(Size), Before);
		HOST_CHECK(End.IsOwn() && End.SizeBefore() == Size);
	}

	/** Whatever is cut off begins with the tail's line break, and is nothing but the tail that names this size. */
	void LookFor(std::string_view Content, int64 Before)
	{
		const FEnd End(Content, Before);
		const int64 Size = End.SizeBefore();
		HOST_CHECK(Size >= -1);
		if (End.IsOwn())
		{
			const std::string Tail = OwnTail(Size);
			HOST_CHECK(Size + static_cast<int64>(Tail.size()) == End.FileSize && Content.ends_with(Tail));
		}
		// Far above what a tail can name, only what stands in front of it can be meant.
		HOST_CHECK(Size < 0 || End.FileSize < (int64(1) << 31) + 100 || End.FileSize - Size <= CorvaneRules::longestUploadTail + 2);
	}
} // namespace

FUZZ(Input)
{
	// Before a short beginning of a file nothing can stand.
	const int64 Told = Input.Number(0, MAX_int64 / 4);
	const int64 Named = Input.Number(INT64_MIN, MAX_int64);
	const std::string Content(Input.Rest());
	const int64 Before = Content.size() < CorvaneRules::longestUploadTail ? 0 : Told;
	AppendAndFind(Content, Before);
	LookFor(Content, Before);
	LookFor(Content + OwnTail(Named), Before);
	LookFor(Content + "\r\n------UE4CorvanePlugin_" + std::to_string(Named) + "--\r\n", Before);
}
