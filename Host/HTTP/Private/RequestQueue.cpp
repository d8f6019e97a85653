#include "RequestQueue.h"

#include "HttpRequest.h"

#include <algorithm>

void FRequestQueue::Add(std::shared_ptr<FHttpRequest> Request)
{
	const FEntry Entry = Hosts.try_emplace(Request->Url->Authority()).first;
	Entry->second.Waiting.push_back(std::move(Request));
	Arrange(Entry);
}

void FRequestQueue::Remove(const FHttpRequest& Request)
{
	const FEntry Entry = Hosts.find(Request.Url->Authority());
	if (Entry != Hosts.end())
	{
		std::erase_if(Entry->second.Waiting, [&Request](const auto& Other) { return Other.get() == &Request; });
		Arrange(Entry);
	}
}

std::vector<std::shared_ptr<FHttpRequest>> FRequestQueue::RemoveAll()
{
	std::vector<std::shared_ptr<FHttpRequest>> Requests;
	for (auto& [Name, Host] : Hosts)
	{
		Requests.insert(Requests.end(), Host.Waiting.begin(), Host.Waiting.end());
		Host.Waiting.clear();
		Host.bReady = false;
	}
	Ready.clear();
	return Requests;
}

std::shared_ptr<FHttpRequest> FRequestQueue::Next()
{
	FHost& Host = *Ready.front();
	Ready.pop_front();
	std::shared_ptr<FHttpRequest> Request = std::move(Host.Waiting.front());
	Host.Waiting.pop_front();
	++Host.Running;
	Host.bReady = !Host.Waiting.empty() && Host.Running < MostPerHost;
	if (Host.bReady)
	{
		Ready.push_back(&Host);
	}
	return Request;
}

void FRequestQueue::Release(const FHttpRequest& Request)
{
	const FEntry Entry = Hosts.find(Request.Url->Authority());
	--Entry->second.Running;
	Arrange(Entry);
}

void FRequestQueue::Arrange(FEntry Entry)
{
	FHost& Host = Entry->second;
	const bool bWasReady = std::exchange(Host.bReady, !Host.Waiting.empty() && Host.Running < MostPerHost);
	if (Host.bReady && !bWasReady)
	{
		Ready.push_back(&Host);
	}
	else if (bWasReady && !Host.bReady)
	{
		std::erase(Ready, &Host);
	}
	if (Host.Waiting.empty() && Host.Running == 0)
	{
		Hosts.erase(Entry);
	}
}
