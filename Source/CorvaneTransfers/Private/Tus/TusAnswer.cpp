#include "Tus/TusAnswer.h"

#include "Attempts/HttpDate.h"
#include "Attempts/RetryPolicy.h"

namespace CorvaneTusAnswer
{
	static const TCHAR* const Version = TEXT("1.0.0");

	/** @return whether a list that is cut by commas names something. */
	static bool Names(const FString& List, const FString& Wanted)
	{
		TArray<FString> Entries;
		List.ParseIntoArray(Entries, TEXT(","), true);
		for (const FString& Entry : Entries)
		{
			if (Entry.Replace(TEXT(" "), TEXT(""), ESearchCase::CaseSensitive).Equals(Wanted, ESearchCase::IgnoreCase))
			{
				return true;
			}
		}
		return false;
	}

	/** Every server that compares sums knows SHA-1. */
	static ECorvaneHashKind ChecksumOf(const FString& Algorithms)
	{
		if (Algorithms.IsEmpty() || Names(Algorithms, TEXT("sha1")))
		{
			return ECorvaneHashKind::Sha1;
		}
		if (Names(Algorithms, TEXT("sha256")))
		{
			return ECorvaneHashKind::Sha256;
		}
		return Names(Algorithms, TEXT("md5")) ? ECorvaneHashKind::Md5 : ECorvaneHashKind::None;
	}

	static FCorvaneTusJudgement Make(ECorvaneTusVerdict Verdict, const FString& Reason)
	{
		FCorvaneTusJudgement Judged;
		Judged.Verdict = Verdict;
		Judged.Reason = Reason;
		return Judged;
	}

	static FCorvaneTusJudgement Refuse(const FString& Reason)
	{
		FCorvaneTusJudgement Judged = Make(ECorvaneTusVerdict::Fail, Reason);
		Judged.Outcome = ECorvaneTransferOutcome::Refused;
		return Judged;
	}

	static FCorvaneTusJudgement TooLarge(const FCorvaneTusHeaders& Told)
	{
		FString Reason = TEXT("the server does not take so much");
		if (Told.MostBytes >= 0)
		{
			Reason += FString::Printf(TEXT(", but %lld bytes at most"), Told.MostBytes);
		}
		return Make(ECorvaneTusVerdict::Fail, Reason);
	}

	/** What a status means to every request but where the caller knows better. */
	static FCorvaneTusJudgement JudgeRefusal(const FCorvaneAnswer& Answer, const FCorvaneTusHeaders& Told)
	{
		if (Answer.Code == 412 || Told.bOtherVersion)
		{
			return Refuse(TEXT("the server speaks another version of the protocol"));
		}
		if (Answer.Code < 400)
		{
			return Make(ECorvaneTusVerdict::Fail,
				FString::Printf(TEXT("the server wants the piece at another address (%d), which has to be named as its own"), Answer.Code));
		}
		switch (Answer.Code)
		{
		case 413:
			return TooLarge(Told);
		case 423:
			return Make(ECorvaneTusVerdict::Wait, TEXT("the server says that somebody else is at this upload"));
		case 460:
			return Make(ECorvaneTusVerdict::SendAgain, TEXT("a piece came to the server damaged"));
		default:
			break;
		}
		const FString Reason = FString::Printf(TEXT("the server answered with %d"), Answer.Code);
		return Make(CorvaneRetry::IsPassing(Answer.Code) ? ECorvaneTusVerdict::Wait : ECorvaneTusVerdict::Fail, Reason);
	}

	/** For a request to the upload itself. */
	static FCorvaneTusJudgement JudgeUploadRefusal(const FCorvaneAnswer& Answer, const FCorvaneTusHeaders& Told)
	{
		switch (Answer.Code)
		{
		case 403:
		case 404:
		case 410:
			return Make(ECorvaneTusVerdict::StartOver, FString::Printf(TEXT("the server knows the upload no more (%d)"), Answer.Code));
		case 409:
			return Make(ECorvaneTusVerdict::AskAgain, TEXT("the server is at another place of the file"));
		default:
			return JudgeRefusal(Answer, Told);
		}
	}
} // namespace CorvaneTusAnswer

TArray<FString> FCorvaneTusHeaders::Names()
{
	return {TEXT("Location"), TEXT("Upload-Offset"), TEXT("Upload-Length"), TEXT("Upload-Expires"), TEXT("Tus-Resumable"),
		TEXT("Tus-Version"), TEXT("Tus-Extension"), TEXT("Tus-Max-Size"), TEXT("Tus-Checksum-Algorithm")};
}

FCorvaneTusHeaders FCorvaneTusHeaders::Read(const FCorvaneAnswer& Answer)
{
	using namespace CorvaneTusAnswer;
	const auto Value = [&Answer](const TCHAR* Name) { return Answer.Kept.FindRef(Name); };
	FCorvaneTusHeaders Told;
	Told.Offset = CorvaneAnswer::ParseNumber(Value(TEXT("Upload-Offset")));
	Told.Length = CorvaneAnswer::ParseNumber(Value(TEXT("Upload-Length")));
	Told.MostBytes = CorvaneAnswer::ParseNumber(Value(TEXT("Tus-Max-Size")));
	Told.Location = Value(TEXT("Location"));
	Told.Expires = CorvaneHttpDate::Parse(Value(TEXT("Upload-Expires")));

	const FString Spoken = Value(TEXT("Tus-Resumable"));
	const FString Known = Value(TEXT("Tus-Version"));
	Told.bOtherVersion =
		(!Spoken.IsEmpty() && !CorvaneTusAnswer::Names(Spoken, Version)) || (!Known.IsEmpty() && !CorvaneTusAnswer::Names(Known, Version));

	const FString Extensions = Value(TEXT("Tus-Extension"));
	Told.bTellsExtensions = !Extensions.IsEmpty();
	Told.bTakesFirstPiece = CorvaneTusAnswer::Names(Extensions, TEXT("creation-with-upload"));
	Told.bTerminates = CorvaneTusAnswer::Names(Extensions, TEXT("termination"));
	if (CorvaneTusAnswer::Names(Extensions, TEXT("checksum")))
	{
		Told.Checksum = ChecksumOf(Value(TEXT("Tus-Checksum-Algorithm")));
	}
	return Told;
}

FCorvaneTusJudgement CorvaneTus::JudgeCreation(const FCorvaneAnswer& Answer, int64 Size)
{
	using namespace CorvaneTusAnswer;
	const FCorvaneTusHeaders Told = FCorvaneTusHeaders::Read(Answer);
	if (!Answer.IsSuccess() || Told.bOtherVersion)
	{
		return JudgeRefusal(Answer, Told);
	}
	if (Told.MostBytes >= 0 && Told.MostBytes < Size)
	{
		return TooLarge(Told);
	}
	if (Told.Location.IsEmpty())
	{
		// Lines can be lost when a connection breaks off; who has another kind of server hears of it soon enough.
		return Make(ECorvaneTusVerdict::Wait, TEXT("the server names no address for the upload, as one of resumable uploads would"));
	}
	return Make(ECorvaneTusVerdict::Created, FString());
}

FCorvaneTusJudgement CorvaneTus::JudgeOffset(const FCorvaneAnswer& Answer, int64 Size)
{
	using namespace CorvaneTusAnswer;
	const FCorvaneTusHeaders Told = FCorvaneTusHeaders::Read(Answer);
	if (!Answer.IsSuccess() || Told.bOtherVersion)
	{
		return JudgeUploadRefusal(Answer, Told);
	}
	if (Told.Offset < 0)
	{
		return Make(ECorvaneTusVerdict::Wait, TEXT("the server does not tell how far the upload is"));
	}
	if (Told.Offset > Size || (Told.Length >= 0 && Told.Length != Size))
	{
		return Make(ECorvaneTusVerdict::StartOver, TEXT("the upload at the server is of another size"));
	}
	return Make(ECorvaneTusVerdict::Told, FString());
}

FCorvaneTusJudgement CorvaneTus::JudgePiece(const FCorvaneAnswer& Answer, int64 Start, int64 End)
{
	using namespace CorvaneTusAnswer;
	const FCorvaneTusHeaders Told = FCorvaneTusHeaders::Read(Answer);
	if (!Answer.IsSuccess() || Told.bOtherVersion)
	{
		return JudgeUploadRefusal(Answer, Told);
	}
	if (Told.Offset < Start || Told.Offset > End)
	{
		return Make(ECorvaneTusVerdict::AskAgain, TEXT("the server does not tell what it has taken of a piece"));
	}
	return Make(ECorvaneTusVerdict::Told, FString());
}
