#include "HttpThread.h"
#include "Text.h"

#include <algorithm>

// What one round of the HTTP thread does to the transfers.

namespace
{

	std::chrono::steady_clock::duration stallCheckInterval(const FHttpSettings& Settings)
	{
		using namespace std::chrono;
		return duration_cast<steady_clock::duration>(duration<double>(std::clamp(Settings.activityTimeoutSeconds / 8, 0.005, 1.0)));
	}
} // namespace

void FHttpThread::CancelAll()
{
	for (const std::unique_ptr<FTransfer>& Transfer : Running)
	{
		End(*Transfer, false);
	}
	for (const std::shared_ptr<FHttpRequest>& Request : std::exchange(Waiting, {}))
	{
		if (!Request->bEnded)
		{
			Complete(Request, false);
		}
	}
}

void FHttpThread::AdmitWaiting()
{
	while (!Waiting.empty() && Running.size() < MostRunning)
	{
		if (!Waiting.front()->bEnded)
		{
			Begin(std::move(Waiting.front()));
		}
		Waiting.pop_front();
	}
}

void FHttpThread::Begin(std::shared_ptr<FHttpRequest> Request)
{
	if (Spare.empty())
	{
		Spare.push_back(std::make_unique<FTransfer>(Round, Settings));
	}
	Running.push_back(std::move(Spare.back()));
	Spare.pop_back();
	FTransfer& Transfer = *Running.back();
	Transfer.Index = Running.size() - 1;
	Transfer.Begin(std::move(Request));
	curl_multi_add_handle(Multi.get(), Transfer.Handle());
}

void FHttpThread::CollectDone()
{
	int Left = 0;
	while (const CURLMsg* Message = curl_multi_info_read(Multi.get(), &Left))
	{
		FTransfer& Transfer = FTransfer::Of(Message->easy_handle);
		const CURLcode Result = Message->data.result; // the message goes with the handle
		curl_multi_remove_handle(Multi.get(), Transfer.Handle());
		if (Transfer.BeginNextHop())
		{
			curl_multi_add_handle(Multi.get(), Transfer.Handle());
			continue;
		}
		const char* Problem = Transfer.Outcome(Result);
		if (Problem)
		{
			UE_LOG(LogHttp, Warning, TEXT("Request failed: %s"), *Text::FromUtf8(Problem));
		}
		End(Transfer, !Problem);
	}
}

void FHttpThread::EndStalled()
{
	if (Round.Now < NextStallCheck)
	{
		return;
	}
	NextStallCheck = Round.Now + stallCheckInterval(Settings);
	for (const std::unique_ptr<FTransfer>& Transfer : Running)
	{
		if (!Transfer->bEnded && Transfer->IsStalled())
		{
			UE_LOG(LogHttp, Warning, TEXT("Request failed: no byte moved for %.3f seconds"), Settings.activityTimeoutSeconds);
			End(*Transfer, false);
		}
	}
}

void FHttpThread::End(FTransfer& Transfer, bool bSucceeded)
{
	if (!std::exchange(Transfer.bEnded, true))
	{
		Transfer.bSucceeded = bSucceeded;
		curl_multi_remove_handle(Multi.get(), Transfer.Handle()); // harmless when it is out already
		Ended.push_back(&Transfer);
	}
}

void FHttpThread::ReportProgress()
{
	size_t Kept = 0;
	for (FTransfer* Transfer : Round.Dirty)
	{
		if (Transfer->bEnded)
		{
			continue; // its last counts go out right before its completion, so that one wake-up of the receiver serves both
		}
		if (Transfer->IsProgressDue())
		{
			Report(*Transfer);
		}
		else
		{
			Round.Dirty[Kept++] = Transfer;
		}
	}
	Round.Dirty.resize(Kept);
}

void FHttpThread::Report(FTransfer& Transfer)
{
	const FTransfer::FProgress Progress = Transfer.TakeProgress();
	Callbacks.Progress(Transfer.GetRequest(), Progress.Sent, Progress.Received);
}

void FHttpThread::CompleteEnded()
{
	for (FTransfer* Transfer : Ended)
	{
		const bool bSucceeded = Transfer->bSucceeded;
		if (Transfer->IsDirty())
		{
			Report(*Transfer);
		}
		const std::shared_ptr<FHttpRequest> Request = Transfer->Release();
		const size_t Index = Transfer->Index;
		std::swap(Running[Index], Running.back());
		Running[Index]->Index = Index;
		Spare.push_back(std::move(Running.back())); // as many as ever ran at once: making a handle costs more than a small GET
		Running.pop_back();
		Complete(Request, bSucceeded);
	}
	Ended.clear();
}

void FHttpThread::Complete(const std::shared_ptr<FHttpRequest>& Request, bool bSucceeded)
{
	Request->bEnded = true;
	const bool bShow = bSucceeded || Settings.bPartialResponseOnFailure;
	Callbacks.Complete(Request, bShow ? Request->GetResponse() : FHttpResponsePtr(), bSucceeded);
}
