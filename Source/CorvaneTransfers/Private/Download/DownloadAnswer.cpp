#include "Download/DownloadAnswer.h"

#include "Attempts/HttpDate.h"
#include "Attempts/RetryPolicy.h"

namespace CorvaneDownloadAnswer
{
	static FCorvaneDownloadJudgement Make(ECorvaneDownloadVerdict Verdict, const FString& Reason)
	{
		FCorvaneDownloadJudgement Judged;
		Judged.Verdict = Verdict;
		Judged.Reason = Reason;
		return Judged;
	}

	static FCorvaneDownloadJudgement Fail(ECorvaneTransferOutcome Outcome, const FString& Reason)
	{
		FCorvaneDownloadJudgement Judged = Make(ECorvaneDownloadVerdict::Fail, Reason);
		Judged.Outcome = Outcome;
		return Judged;
	}

	static FCorvaneDownloadJudgement Again(const FString& Reason)
	{
		return Make(ECorvaneDownloadVerdict::StartOverAgain, Reason);
	}

	static bool IsOtherTotal(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer)
	{
		const int64 Told = Answer.ToldTotal();
		return Question.Total >= 0 && Told >= 0 && Told != Question.Total;
	}

	static FString UnexpectedSize(const FCorvaneDownloadQuestion& Question, int64 Told)
	{
		return FString::Printf(TEXT("the file has %lld bytes, %lld were expected"), Told, Question.ExpectedSize);
	}

	static bool IsUnexpectedSize(const FCorvaneDownloadQuestion& Question, int64 Told)
	{
		return Question.ExpectedSize >= 0 && Told >= 0 && Told != Question.ExpectedSize;
	}

	/** A server that knows no If-Modified-Since sends the old file. */
	static bool IsNoNewer(const FCorvaneDownloadQuestion& Question, const FString& LastModified)
	{
		if (Question.IfNewerThan.GetTicks() == 0)
		{
			return false;
		}
		const int64 Changed = CorvaneHttpDate::Parse(LastModified).GetTicks();
		return Changed > 0 && Changed <= Question.IfNewerThan.GetTicks();
	}

	/** The same of an answer that fits what is on disk: it need not repeat the date that was told with that. */
	static bool IsRestNoNewer(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer)
	{
		const FString& Told = Answer.Version.LastModified;
		return IsNoNewer(Question, Told.IsEmpty() ? Question.Version.LastModified : Told);
	}

	static FCorvaneDownloadJudgement Unchanged()
	{
		return Make(ECorvaneDownloadVerdict::Unchanged, TEXT("the server has nothing newer"));
	}

	/** @return whether the answer is of the very version that the question knows, so that what was told of that holds. */
	static bool IsSameFile(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer)
	{
		const FString Known = Question.Version.ForIfRange();
		return !Known.IsEmpty() && Known.Equals(Answer.Version.ForIfRange(), ESearchCase::CaseSensitive);
	}

	/** Where an answer does not tell how long the file is, an earlier one may have. */
	static void RememberTotal(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer, FCorvaneDownloadJudgement& Judged)
	{
		if (Judged.Total >= 0 || Question.Total < 0)
		{
			return;
		}
		if (IsSameFile(Question, Answer))
		{
			Judged.Total = Question.Total;
		}
		else if (!Answer.bTellsEnd && Question.Version.MayBe(Answer.Version))
		{
			Judged.LeastBytes = Question.Total;
		}
	}

	static FCorvaneDownloadJudgement Begin(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer)
	{
		const int64 Told = Answer.ToldTotal();
		if (IsNoNewer(Question, Answer.Version.LastModified))
		{
			return Unchanged();
		}
		if (IsUnexpectedSize(Question, Told))
		{
			return Fail(ECorvaneTransferOutcome::WrongSize, UnexpectedSize(Question, Told));
		}
		FCorvaneDownloadJudgement Judged = Make(ECorvaneDownloadVerdict::StartOverWithThis, FString());
		Judged.Total = Told;
		RememberTotal(Question, Answer, Judged);
		Judged.MostBytes = Answer.Code == 206 ? Answer.Range.Last + 1 : Judged.Total < 0 ? Question.ExpectedSize : Judged.Total;
		if (!Answer.bEncoded)
		{
			Judged.Version = Answer.Version;
		}
		if (Question.OnDisk > 0)
		{
			Judged.bChanged = IsOtherTotal(Question, Answer) || !Question.Version.MayBe(Answer.Version);
			Judged.Reason =
				Judged.bChanged ? TEXT("the file is another version than before") : TEXT("the server does not send parts of the file");
		}
		return Judged;
	}

	/** @return why the part that came does not go behind what is on disk; empty when it does. */
	static FString FindMisfit(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer)
	{
		if (!Answer.Range.bValid)
		{
			return TEXT("the server does not say which part of the file it sends");
		}
		if (Answer.Range.First != Question.From())
		{
			return TEXT("the server sent another part of the file than the one that was asked for");
		}
		const bool bEndsBeforeDisk = Answer.Range.Total >= 0 && Answer.Range.Total < Question.OnDisk;
		if (bEndsBeforeDisk || IsOtherTotal(Question, Answer) || (Question.Total >= 0 && Answer.Range.Last >= Question.Total))
		{
			return TEXT("the file has another size than before");
		}
		return Question.Version.MayBe(Answer.Version) ? FString() : FString(TEXT("the file is another version than before"));
	}

	static FCorvaneDownloadJudgement JudgePart(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer)
	{
		if (Answer.bEncoded)
		{
			return Again(TEXT("the server packs the parts it sends"));
		}
		const FString Misfit = Question.OnDisk > 0 ? FindMisfit(Question, Answer) : FString();
		const bool bFromBeginning = Answer.Range.bValid && Answer.Range.First == 0;
		if (!Misfit.IsEmpty() || (Question.OnDisk == 0 && !bFromBeginning))
		{
			return Again(Misfit.IsEmpty() ? FString(TEXT("the server sent a part of the file that was not asked for")) : Misfit);
		}
		if (Question.OnDisk == 0)
		{
			return Begin(Question, Answer);
		}
		if (IsRestNoNewer(Question, Answer))
		{
			return Unchanged();
		}
		if (IsUnexpectedSize(Question, Answer.Range.Total))
		{
			return Fail(ECorvaneTransferOutcome::WrongSize, UnexpectedSize(Question, Answer.Range.Total));
		}
		FCorvaneDownloadJudgement Judged =
			Make(Question.Compare > 0 ? ECorvaneDownloadVerdict::CompareThenAppend : ECorvaneDownloadVerdict::Append, FString());
		Judged.MostBytes = Answer.Range.Last - Answer.Range.First + 1;
		Judged.Total = Question.Total >= 0 ? Question.Total : Answer.Range.Total;
		Judged.Version = Question.Version;
		if (Question.Version.LastModified.IsEmpty() && Question.Version.HasStrongETag())
		{
			Judged.Version.LastModified = Answer.Version.LastModified; // the tag alone decides; the date may go onto the file
		}
		return Judged;
	}

	/** No byte is left from where it was asked. */
	static FCorvaneDownloadJudgement JudgeNothingLeft(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer)
	{
		const bool bHere = Question.OnDisk > 0 && Question.Compare == 0 && Answer.Range.Total == Question.OnDisk;
		if (!bHere || IsOtherTotal(Question, Answer) || !Question.Version.MayBe(Answer.Version))
		{
			return Again(Question.OnDisk > 0 ? TEXT("the file is not as long as what is on disk") : TEXT("the file has no first part"));
		}
		if (IsRestNoNewer(Question, Answer))
		{
			return Unchanged();
		}
		FCorvaneDownloadJudgement Judged = Make(ECorvaneDownloadVerdict::AllThere, FString());
		Judged.Total = Question.OnDisk;
		Judged.Version = Question.Version;
		return Judged;
	}
} // namespace CorvaneDownloadAnswer

FCorvaneDownloadJudgement CorvaneDownload::JudgeAnswer(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer)
{
	using namespace CorvaneDownloadAnswer;
	switch (Answer.Code)
	{
	case 200:
	case 203: // changed by a proxy on the way
		return Begin(Question, Answer);
	case 206:
		return JudgePart(Question, Answer);
	case 304:
		return Question.IfNewerThan.GetTicks() > 0
				   ? Unchanged()
				   : Fail(ECorvaneTransferOutcome::ServerError, TEXT("the server said that nothing has changed, which was not asked"));
	case 412:
		return Again(TEXT("the file is another version than before"));
	case 416:
		return JudgeNothingLeft(Question, Answer);
	default:
		break;
	}
	const FString Reason = FString::Printf(TEXT("the server answered %d"), Answer.Code);
	return CorvaneRetry::IsPassing(Answer.Code) ? Make(ECorvaneDownloadVerdict::WaitAndGoOn, Reason)
												: Fail(ECorvaneTransferOutcome::ServerError, Reason);
}
