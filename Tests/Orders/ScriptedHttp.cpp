// The HTTP thread under the schedule: it plays answers, one callback at a time. Linked instead of the host's own; requests
// and responses are the host's.

#include "ScriptedHttp.h"

#include "HttpRequest.h"
#include "HttpThread.h"
#include "Schedule.h"
#include "TextSupport.h"

#include <algorithm>
#include <deque>
#include <optional>

namespace
{
	using FRequest = std::shared_ptr<FHttpRequest>;

	struct FPlayed
	{
		FRequest Request;
		Asked Question;
		std::optional<Answer> Told = {}; // which waits for the body
		size_t At = 0; // of the steps: status, headers, blocks, end
		double LatestEnd = Schedule::forever; // of one that has fallen silent

		bool IsLate() const { return Schedule::the().now() >= LatestEnd; }
		bool HasStep() const
		{
			return IsLate() || !Told || Told->end != Answer::End::Silent || At < 1 + Told->headers.size() + Told->blocks.size();
		}
	};

	struct FService
	{
		std::deque<std::pair<FRequest, bool>> Commands; // true = cancel
		bool bAccepting = false;
		bool bRuns = false;
	} Service;
	std::vector<FPlayed> Running;

	void EndRequest(FRequest Request, FHttpOutcome Outcome)
	{
		traffic.running -= std::erase_if(Running, [&](const FPlayed& Each) { return Each.Request == Request; });
		Request->End(Outcome);
	}

	void Begin(const FRequest& Request)
	{
		Request->bEnded = false;
		if (Request->bRefused || !Request->ParseUrl())
		{
			Request->End({});
			return;
		}
		++traffic.taken;
		++traffic.running;
		const std::string Address = utf8(Request->GetEffectiveURL());
		const std::string Path = Address.substr(std::min(Address.size(), Address.find('/', 8)));
		const auto Header = [&](const TCHAR* Name) { return utf8(Request->GetHeader(Name)); };
		FPlayed& Played = Running.emplace_back(Request, Asked{Request->Verb, Path, Header(TEXT("Range")), Header(TEXT("Upload-Offset"))});
		if (!Request->Body)
		{
			Played.Told = traffic.server(Played.Question);
		}
	}

	void TakeCommand()
	{
		const auto [Request, bCancel] = Service.Commands.front();
		Service.Commands.pop_front();
		if (!bCancel)
		{
			Begin(Request);
		}
		else if (!Request->bEnded)
		{
			EndRequest(Request, {EHttpFailureReason::Cancelled, 0});
		}
	}

	/** A third of the body. */
	void TakePart(FPlayed& Played)
	{
		FHttpRequest& Request = *Played.Request;
		Asked& Question = Played.Question;
		const bool bBreaks = traffic.mayBreak && traffic.taken <= 2 && Schedule::the().choose("the connection breaks", 4) == 1;
		if (bBreaks && Question.body.empty())
		{
			return EndRequest(Played.Request, {EHttpFailureReason::ConnectionError, 0});
		}
		std::string Part(Request.Body->GetSize() / 3 + 1, '\0');
		const std::optional<size_t> Number = bBreaks ? std::nullopt : Request.Body->Read(Part.data(), Part.size());
		Question.body.append(Part, 0, Number.value_or(0));
		Question.isWhole = Question.body.size() == Request.Body->GetSize();
		if (!Number)
		{
			traffic.server(Question);
			return EndRequest(Played.Request, {EHttpFailureReason::Other, 0});
		}
		if (Question.isWhole || *Number == 0)
		{
			Played.Told = traffic.server(Question);
		}
		Request.NoteSent(Question.body.size());
	}

	void PlayEnd(const FPlayed& Played)
	{
		using enum EHttpFailureReason;
		const Answer::End End = Played.Told->end;
		const auto Reason = End == Answer::End::NoConnection ? ConnectionError : End == Answer::End::Dropped ? Other : None;
		EndRequest(Played.Request, {Reason, Reason == ConnectionError ? 0 : Played.Told->code});
	}

	void Play(FPlayed& Played)
	{
		const Answer& Told = *Played.Told;
		FHttpRequest& Request = *Played.Request;
		const size_t Headers = Told.headers.size();
		const size_t At = Played.At++;
		if (!Played.HasStep())
		{
			const double Patience = Request.ActivityTimeoutSeconds.value_or(FHttpSettings().activityTimeoutSeconds);
			Played.LatestEnd = Schedule::the().now() + Patience;
		}
		if (Told.end == Answer::End::NoConnection || At > Headers + Told.blocks.size())
		{
			PlayEnd(Played);
		}
		else if (At == 0)
		{
			Request.BeginResponse();
			Request.TakeStatus(Told.code);
		}
		else if (At <= Headers)
		{
			const auto& [Name, Value] = Told.headers[At - 1];
			if (Name == "Content-Length")
			{
				Request.TakeLength(std::stoull(Value));
			}
			Request.TakeHeader(FString(Name.c_str()), FString(Value.c_str()));
		}
		else if (std::string Bytes = Told.blocks[At - Headers - 1]; !Request.TakeBody(Bytes.data(), Bytes.size()))
		{
			EndRequest(Played.Request, {EHttpFailureReason::Other, Told.code});
		}
	}

	void Step(FPlayed& Played)
	{
		if (Played.IsLate())
		{
			return EndRequest(Played.Request, {EHttpFailureReason::ConnectionError, 0});
		}
		Played.Told ? Play(Played) : TakePart(Played);
	}

	std::vector<FPlayed*> WithSteps()
	{
		std::vector<FPlayed*> Ready;
		for (FPlayed& Played : Running)
		{
			Played.HasStep() ? Ready.push_back(&Played) : void();
		}
		return Ready;
	}

	double EarliestEnd()
	{
		double Earliest = Schedule::forever;
		for (const FPlayed& Played : Running)
		{
			Earliest = std::min(Earliest, Played.LatestEnd);
		}
		return Earliest;
	}

	void ServeAll()
	{
		for (;;)
		{
			const auto HasWork = [] { return !Service.Commands.empty() || !Service.bAccepting || !WithSteps().empty(); };
			Schedule::the().waitUntil("looks for work", nullptr, HasWork, EarliestEnd() - Schedule::the().now());
			if (Service.Commands.empty() && !Service.bAccepting)
			{
				break;
			}
			const std::vector<FPlayed*> Ready = WithSteps();
			const size_t First = !Service.Commands.empty(); // of the steps
			if (First + Ready.size() > 0)
			{
				const auto Taken = static_cast<size_t>(Schedule::the().choose("does work", static_cast<int>(First + Ready.size())));
				Taken < First ? TakeCommand() : Step(*Ready[Taken - First]);
			}
		}
		while (!Running.empty())
		{
			EndRequest(Running.back().Request, {EHttpFailureReason::Cancelled, 0});
		}
		Service.bRuns = false;
	}
} // namespace

FHttpThread& FHttpThread::Get()
{
	static FHttpThread& Thread = *new FHttpThread();
	return Thread;
}

void FHttpThread::Launch(const FHttpSettings& InSettings)
{
	Settings = InSettings;
	Service.bAccepting = Service.bRuns = true;
	Schedule::the().spawn("http", &ServeAll);
}

void FHttpThread::Shutdown()
{
	Service.bAccepting = false;
	Schedule::the().waitUntil("waits for the HTTP thread", nullptr, [] { return !Service.bRuns; });
}

bool FHttpThread::Start(std::shared_ptr<FHttpRequest> Request)
{
	traffic.started += Request->Verb != "DELETE";
	Schedule::the().point("starts a request", Request.get());
	if (!Service.bAccepting)
	{
		Request->EndWithoutService();
		return false;
	}
	Service.Commands.emplace_back(std::move(Request), false);
	Schedule::the().point("has started a request");
	return true;
}

void FHttpThread::Cancel(std::shared_ptr<FHttpRequest> Request)
{
	Schedule::the().point("cancels a request", Request.get());
	if (Service.bAccepting)
	{
		Service.Commands.emplace_back(std::move(Request), true);
	}
}
