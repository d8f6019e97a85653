// Cassettes: any text is one, or has a fault on a line that is told; what was recorded is read as it was.

#include "Lab/Cassettes/Cassette.h"

#include "Fuzz.h"
#include "Lab/Wire/Answer.h"

#include <sstream>
#include <stdexcept>

namespace
{
	using namespace Lab;

	Cassette Read(const std::string& Text)
	{
		std::istringstream Stream(Text);
		return parseCassette(Stream);
	}

	std::string Print(const Cassette& Recorded)
	{
		std::string Text = cassetteHead;
		for (const RecordedExchange& Exchange : Recorded)
		{
			Text += print(Exchange);
		}
		return Text;
	}

	/** Pauses are told to a tenth of a millisecond. */
	void CheckSame(const Cassette& A, const Cassette& B)
	{
		HOST_CHECK(A.size() == B.size());
		for (size_t Index = 0; Index < A.size(); ++Index)
		{
			const auto &One = A[Index].answer.pieces, &Other = B[Index].answer.pieces;
			HOST_CHECK(A[Index].request == B[Index].request && A[Index].answer.end == B[Index].answer.end && One.size() == Other.size());
			for (size_t Piece = 0; Piece < One.size(); ++Piece)
			{
				HOST_CHECK(One[Piece].bytes == Other[Piece].bytes && std::abs((One[Piece].pause - Other[Piece].pause).count()) <= 0.1);
				HOST_CHECK(later(Clock::time_point(), One[Piece].pause) >= Clock::time_point()); // a clock can count so far
			}
		}
	}

	void CheckWithoutSecrets(RecordedExchange Exchange)
	{
		const size_t Pieces = Exchange.answer.pieces.size();
		removeSecrets(Exchange);
		RecordedExchange Again = Exchange;
		removeSecrets(Again);
		CheckSame({Exchange}, {Again}); // nothing was left
		HOST_CHECK(Exchange.answer.pieces.size() == Pieces);
		CheckSame(Read(Print({Exchange})), {Exchange});
	}
} // namespace

FUZZ(Input)
{
	Cassette Recorded;
	const std::string Text(Input.Rest());
	try
	{
		Recorded = Read(cassetteHead + Text);
	}
	catch (const std::invalid_argument& Fault)
	{
		HOST_CHECK(std::string_view(Fault.what()).starts_with("line "));
		return;
	}
	CheckSame(Read(Print(Recorded)), Recorded);
	for (const RecordedExchange& Exchange : Recorded)
	{
		CheckWithoutSecrets(Exchange);
	}
	CheckWithoutSecrets({Text, {{{{}, Text}}, RawEnd::Close}});
}
