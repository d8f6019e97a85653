// The HTTP thread under the schedule: it plays answers, one callback at a time. Linked instead of the host's own; requests
// and responses are the host's.

#include "ScriptedHttp.h"

#include "Containers/StringConv.h"
#include "HttpRequest.h"
#include "HttpThread.h"
#include "Schedule.h"

#include <algorithm>
#include <deque>
#include <optional>

using Orders::Schedule;

namespace
{
	struct FPlayed
	{
		std::shared_ptr<FHttpRequest> Request;
		Orders::Asked Asked;
		bool bAnswered = false; // which waits for the body
		Orders::Answer Answer;
		size_t At = 0; // of the steps: status, headers, blocks, end
		double LatestEnd = Schedule::forever; // of one that has fallen silent
	};

	struct FScriptedService
	{
		std::deque<std::pair<std::shared_ptr<FHttpRequest>, bool>> Commands; // true = cancel
		std::vector<FPlayed> Running;
		Orders::Server Server;
		int NumTaken = 0;
		int NumStarted = 0;
		bool bMayBreak = false;
		bool bAccepting = false;
		bool bRuns = false;

		void Run();
		void TakeCommand();
		void Begin(const std::shared_ptr<FHttpRequest>& Request);
		void EndRequest(const std::shared_ptr<FHttpRequest>& Request, FHttpOutcome Outcome);
		std::vector<size_t> WithSteps() const;
		double EarliestEnd() const;
		void Step(FPlayed& Played);
		void TakePart(FPlayed& Played);
		void Play(FPlayed& Played);
		void AnswerIt(FPlayed& Played)
		{
			Played.Answer = Server(Played.Asked);
			Played.bAnswered = true;
		}
		void StepBody(FPlayed& Played, size_t Block);
		void StepEnd(const FPlayed& Played);
	};

	FScriptedService& theService()
	{
		static FScriptedService& Service = *new FScriptedService();
		return Service;
	}

	bool hasStep(const FPlayed& Played)
	{
		return Schedule::the().now() >= Played.LatestEnd || !Played.bAnswered || Played.Answer.end != Orders::Answer::End::Silent ||
			   Played.At < 1 + Played.Answer.headers.size() + Played.Answer.blocks.size();
	}

	std::string utf8(const FString& Text)
	{
		return FTCHARToUTF8(*Text).Get();
	}

	void FScriptedService::Run()
	{
		for (;;)
		{
			const auto HasWork = [this] { return !Commands.empty() || !bAccepting || !WithSteps().empty(); };
			Schedule::the().waitUntil("looks for work", nullptr, HasWork, EarliestEnd() - Schedule::the().now());
			const std::vector<size_t> Ready = WithSteps();
			if (Commands.empty() && !bAccepting)
			{
				break;
			}
			if (Commands.empty() && Ready.empty())
			{
				continue;
			}
			const int Options = static_cast<int>(Ready.size()) + !Commands.empty();
			const int Taken = Schedule::the().choose("does work", Options);
			if (!Commands.empty() && Taken == 0)
			{
				TakeCommand();
			}
			else
			{
				Step(Running[Ready[static_cast<size_t>(Taken) - !Commands.empty()]]);
			}
		}
		while (!Running.empty())
		{
			EndRequest(Running.back().Request, {EHttpFailureReason::Cancelled, 0});
		}
		bRuns = false;
	}

	void FScriptedService::TakeCommand()
	{
		const auto [Request, bCancel] = Commands.front();
		Commands.pop_front();
		if (!bCancel)
		{
			Begin(Request);
		}
		else if (!Request->bEnded)
		{
			EndRequest(Request, {EHttpFailureReason::Cancelled, 0});
		}
	}

	void FScriptedService::Begin(const std::shared_ptr<FHttpRequest>& Request)
	{
		Request->bEnded = false;
		if (!Request->Url)
		{
			Request->End({});
			return;
		}
		++NumTaken;
		const std::string Address = utf8(Request->GetEffectiveURL());
		const std::string Path = Address.substr(std::min(Address.size(), Address.find('/', 8)));
		const auto Header = [&](const TCHAR* Name) { return utf8(Request->GetHeader(Name)); };
		FPlayed& Played = Running.emplace_back();
		Played.Request = Request;
		Played.Asked = {Request->Verb, Path, Header(TEXT("Range")), Header(TEXT("Upload-Offset"))};
		if (!Request->Body)
		{
			AnswerIt(Played);
		}
	}

	void FScriptedService::EndRequest(const std::shared_ptr<FHttpRequest>& Request, FHttpOutcome Outcome)
	{
		std::erase_if(Running, [&](const FPlayed& Each) { return Each.Request == Request; });
		Request->End(Outcome);
	}

	std::vector<size_t> FScriptedService::WithSteps() const
	{
		std::vector<size_t> Ready;
		for (size_t Index = 0; Index < Running.size(); ++Index)
		{
			if (hasStep(Running[Index]))
			{
				Ready.push_back(Index);
			}
		}
		return Ready;
	}

	double FScriptedService::EarliestEnd() const
	{
		double Earliest = Schedule::forever;
		for (const FPlayed& Played : Running)
		{
			Earliest = std::min(Earliest, Played.LatestEnd);
		}
		return Earliest;
	}

	void FScriptedService::Step(FPlayed& Played)
	{
		if (Schedule::the().now() >= Played.LatestEnd)
		{
			return EndRequest(FPlayed(Played).Request, {EHttpFailureReason::ConnectionError, 0});
		}
		Played.bAnswered ? Play(Played) : TakePart(Played);
	}

	/** A third of the body. */
	void FScriptedService::TakePart(FPlayed& Played)
	{
		const std::shared_ptr<FHttpRequest> Request = Played.Request;
		const bool bBreaks = bMayBreak && NumTaken <= 2 && Schedule::the().choose("the connection breaks", 4) == 1;
		if (bBreaks && Played.Asked.body.empty())
		{
			return EndRequest(Request, {EHttpFailureReason::ConnectionError, 0});
		}
		std::string Part(Request->Body->GetSize() / 3 + 1, '\0');
		const std::optional<size_t> Number = bBreaks ? std::nullopt : Request->Body->Read(Part.data(), Part.size());
		Played.Asked.body.append(Part, 0, Number.value_or(0));
		Played.Asked.isWhole = Played.Asked.body.size() == Request->Body->GetSize();
		if (!Number)
		{
			Server(Played.Asked);
			return EndRequest(Request, {EHttpFailureReason::Other, 0});
		}
		if (Played.Asked.isWhole || *Number == 0)
		{
			AnswerIt(Played);
		}
		Request->NoteSent(Played.Asked.body.size());
	}

	void FScriptedService::Play(FPlayed& Played)
	{
		const size_t Headers = Played.Answer.headers.size();
		const size_t At = Played.At++;
		if (!hasStep(Played))
		{
			const double Patience = Played.Request->ActivityTimeoutSeconds.value_or(FHttpSettings().activityTimeoutSeconds);
			Played.LatestEnd = Schedule::the().now() + Patience;
		}
		if (Played.Answer.end == Orders::Answer::End::NoConnection || At > Headers + Played.Answer.blocks.size())
		{
			StepEnd(FPlayed(Played));
		}
		else if (At == 0)
		{
			Played.Request->BeginResponse();
			Played.Request->TakeStatus(Played.Answer.code);
		}
		else if (At <= Headers)
		{
			const auto& [Name, Value] = Played.Answer.headers[At - 1];
			if (Name == "Content-Length")
			{
				Played.Request->TakeLength(std::stoull(Value));
			}
			Played.Request->TakeHeader(FString(Name.c_str()), FString(Value.c_str()));
		}
		else
		{
			StepBody(Played, At - Headers - 1);
		}
	}

	void FScriptedService::StepBody(FPlayed& Played, size_t Block)
	{
		std::string Bytes = Played.Answer.blocks[Block];
		const int Code = Played.Answer.code;
		const std::shared_ptr<FHttpRequest> Request = Played.Request;
		if (!Request->TakeBody(Bytes.data(), Bytes.size()))
		{
			EndRequest(Request, {EHttpFailureReason::Other, Code});
		}
	}

	void FScriptedService::StepEnd(const FPlayed& Played)
	{
		switch (Played.Answer.end)
		{
		case Orders::Answer::End::NoConnection:
			return EndRequest(Played.Request, {EHttpFailureReason::ConnectionError, 0});
		case Orders::Answer::End::Dropped:
			return EndRequest(Played.Request, {EHttpFailureReason::Other, Played.Answer.code});
		default:
			return EndRequest(Played.Request, {EHttpFailureReason::None, Played.Answer.code});
		}
	}
} // namespace

void Orders::serveWith(Server server, bool mayBreak)
{
	theService().Server = std::move(server);
	theService().NumTaken = theService().NumStarted = 0;
	theService().bMayBreak = mayBreak;
}

int Orders::requestsTaken()
{
	return theService().NumTaken;
}

int Orders::requestsStarted()
{
	return theService().NumStarted;
}

std::size_t Orders::requestsRunning()
{
	return theService().Running.size();
}

FHttpThread& FHttpThread::Get()
{
	static FHttpThread& Thread = *new FHttpThread();
	return Thread;
}

void FHttpThread::Launch(const FHttpSettings& InSettings)
{
	Settings = InSettings;
	theService().bAccepting = theService().bRuns = true;
	Schedule::the().spawn("http", [] { theService().Run(); });
}

void FHttpThread::Shutdown()
{
	theService().bAccepting = false;
	Schedule::the().waitUntil("waits for the HTTP thread", nullptr, [] { return !theService().bRuns; });
}

bool FHttpThread::Start(std::shared_ptr<FHttpRequest> Request)
{
	theService().NumStarted += Request->Verb != "DELETE";
	Schedule::the().point("starts a request", Request.get());
	if (!theService().bAccepting)
	{
		Request->EndWithoutService();
		return false;
	}
	theService().Commands.emplace_back(std::move(Request), false);
	Schedule::the().point("has started a request");
	return true;
}

void FHttpThread::Cancel(std::shared_ptr<FHttpRequest> Request)
{
	Schedule::the().point("cancels a request", Request.get());
	if (theService().bAccepting)
	{
		theService().Commands.emplace_back(std::move(Request), true);
	}
}
