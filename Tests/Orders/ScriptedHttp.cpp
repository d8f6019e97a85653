// The HTTP thread under the schedule: it plays answers, one callback at a time. Linked instead of the host's own; requests
// and responses are the host's.

#include "ScriptedHttp.h"

#include "Containers/StringConv.h"
#include "HttpRequest.h"
#include "HttpThread.h"
#include "Schedule.h"

#include <algorithm>
#include <deque>

using Orders::Schedule;

namespace
{
	struct FPlayed
	{
		std::shared_ptr<FHttpRequest> Request;
		Orders::Answer Answer;
		size_t At = 0; // of the steps: status, headers, blocks, end
	};

	struct FScriptedService
	{
		std::deque<std::pair<std::shared_ptr<FHttpRequest>, bool>> Commands; // true = cancel
		std::vector<FPlayed> Running;
		Orders::Server Server;
		int NumTaken = 0;
		bool bAccepting = false;
		bool bRuns = false;

		void Run();
		void TakeCommand();
		void Begin(const std::shared_ptr<FHttpRequest>& Request);
		void EndRequest(const std::shared_ptr<FHttpRequest>& Request, FHttpOutcome Outcome);
		std::vector<size_t> WithSteps() const;
		void Step(FPlayed& Played);
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
		const size_t Steps = 1 + Played.Answer.headers.size() + Played.Answer.blocks.size();
		return Played.Answer.end != Orders::Answer::End::Silent || Played.At < Steps;
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
			Schedule::the().waitUntil("looks for work", nullptr, HasWork);
			const std::vector<size_t> Ready = WithSteps();
			if (Commands.empty() && !bAccepting)
			{
				break;
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
		Running.push_back({Request, Server(Request->Verb, Path, utf8(Request->GetHeader(TEXT("Range")))), 0});
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

	void FScriptedService::Step(FPlayed& Played)
	{
		const size_t Headers = Played.Answer.headers.size();
		const size_t At = Played.At++;
		if (Played.Answer.end == Orders::Answer::End::NoConnection || At > Headers + Played.Answer.blocks.size())
		{
			StepEnd(FPlayed(Played));
		}
		else if (At == 0)
		{
			char Byte = 0;
			while (Played.Request->Body && Played.Request->Body->Read(&Byte, 1).value_or(0) > 0)
			{
			}
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

void Orders::serveWith(Server server)
{
	theService().Server = std::move(server);
	theService().NumTaken = 0;
}

int Orders::requestsTaken()
{
	return theService().NumTaken;
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
