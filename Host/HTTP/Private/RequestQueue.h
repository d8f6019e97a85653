#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class FHttpRequest;

/**
 * Requests that were started and wait for a connection. So many run at once to one host, first come, first served; hosts
 * take turns. libcurl could keep such a queue itself, but its time limits would count the time in it. A redirect to another
 * host goes on as a request to the first. Thread: HTTP thread.
 */
class FRequestQueue
{
public:
	/** @param InMostPerHost  requests that run at once to one host and port, at least 1. */
	explicit FRequestQueue(size_t InMostPerHost)
		: MostPerHost(InMostPerHost)
	{
	}

	/** Takes a request whose Url is set. */
	void Add(std::shared_ptr<FHttpRequest> Request);
	/** Drops a request that waits. */
	void Remove(const FHttpRequest& Request);
	std::vector<std::shared_ptr<FHttpRequest>> RemoveAll();

	bool HasNext() const { return !Ready.empty(); }
	/** Takes out the request whose turn it is: from here on it runs. There is one. */
	std::shared_ptr<FHttpRequest> Next();
	/** Notes that a request that ran has ended. */
	void Release(const FHttpRequest& Request);

private:
	struct FHost
	{
		std::deque<std::shared_ptr<FHttpRequest>> Waiting;
		size_t Running = 0;
		bool bReady = false; // listed: something waits, and may begin
	};
	using FEntry = std::unordered_map<std::string, FHost>::iterator;

	/** Lists a host, takes it off the list or forgets it, as its requests ask for. */
	void Arrange(FEntry Entry);

	const size_t MostPerHost;
	std::unordered_map<std::string, FHost> Hosts; // by host and port; only those with requests
	std::deque<FHost*> Ready;
};
