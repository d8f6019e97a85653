#include "HttpThread.h"

#include <algorithm>

// What one round of the HTTP thread does to the transfers.

namespace
{
	std::chrono::steady_clock::duration limitCheckInterval(double ShortestLimitSeconds)
	{
		using namespace std::chrono;
		return duration_cast<steady_clock::duration>(duration<double>(std::clamp(ShortestLimitSeconds / 8, 0.005, 1.0)));
	}
} // namespace

void FHttpThread::CancelAll()
{
	for (const std::unique_ptr<FTransfer>& Transfer : Running)
	{
		End(*Transfer, {EHttpFailureReason::Cancelled, 0});
	}
	for (const std::shared_ptr<FHttpRequest>& Request : Queue->RemoveAll())
	{
		Request->End({EHttpFailureReason::Cancelled, 0});
	}
}

void FHttpThread::AdmitWaiting()
{
	while (Queue->HasNext() && Running.size() < MostRunning)
	{
		Begin(Queue->Next());
	}
}

void FHttpThread::Begin(std::shared_ptr<FHttpRequest> Request)
{
	if (Spare.empty())
	{
		Spare.push_back(std::make_unique<FTransfer>(Now, Settings));
	}
	Running.push_back(std::move(Spare.back()));
	Spare.pop_back();
	FTransfer& Transfer = *Running.back();
	Transfer.Index = Running.size() - 1;
	Transfer.Begin(std::move(Request));
	ShortestLimit = std::min(ShortestLimit, Transfer.ShortestLimit());
	NextLimitCheck = std::min(NextLimitCheck, Now + limitCheckInterval(ShortestLimit));
	curl_multi_add_handle(Multi.get(), Transfer.Handle());
}

void FHttpThread::CollectDone()
{
	int Left = 0;
	while (const CURLMsg* Message = curl_multi_info_read(Multi.get(), &Left))
	{
		FTransfer& Transfer = FTransfer::Of(Message->easy_handle);
		End(Transfer, Transfer.Judge(Message->data.result));
	}
}

void FHttpThread::EndSilent()
{
	if (Now < NextLimitCheck)
	{
		return;
	}
	NextLimitCheck = Now + limitCheckInterval(ShortestLimit);
	for (const std::unique_ptr<FTransfer>& Transfer : Running)
	{
		if (const std::optional<EHttpFailureReason> Reason = Transfer->FindPassedLimit(); Reason && !Transfer->bEnded)
		{
			UE_LOG(LogHttp, Warning, TEXT("Request failed: its time limit has passed"));
			End(*Transfer, {*Reason, 0});
		}
	}
}

void FHttpThread::End(FTransfer& Transfer, FHttpOutcome Outcome)
{
	if (!std::exchange(Transfer.bEnded, true))
	{
		Transfer.Outcome = Outcome;
		curl_multi_remove_handle(Multi.get(), Transfer.Handle());
		Ended.push_back(&Transfer);
	}
}

void FHttpThread::CompleteEnded()
{
	for (FTransfer* Transfer : Ended)
	{
		const std::shared_ptr<FHttpRequest> Request = Transfer->Release();
		const size_t Index = Transfer->Index;
		std::swap(Running[Index], Running.back());
		Running[Index]->Index = Index;
		Spare.push_back(std::move(Running.back())); // as many as ever ran at once: making a handle costs more than a small GET
		Running.pop_back();
		Queue->Release(*Request);
		Request->End(Transfer->Outcome);
	}
	Ended.clear();
}
