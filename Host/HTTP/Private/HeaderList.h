#pragma once

#include <curl/curl.h>
#include <memory>
#include <string>
#include <string_view>

/** Header lines of a request in the form that libcurl takes them. */
class FHeaderList
{
public:
	/** Name and Value are known to be safe to send. An empty value is sent as such. */
	void Add(const std::string& Name, std::string_view Value);

	/** Keeps libcurl from adding a header of its own choice; one that is added later is sent all the same. */
	void Remove(const char* Name);

	/** @param bKeep  asked with each header's name. @return the headers that it wants, in the same order. */
	template <class Predicate>
	FHeaderList Filtered(Predicate bKeep) const
	{
		FHeaderList Result;
		for (const curl_slist* Line = Lines.get(); Line; Line = Line->next)
		{
			if (bKeep(NameOf(Line->data)))
			{
				Result.AddLine(Line->data);
			}
		}
		return Result;
	}

	/** For libcurl; owned by this object. */
	curl_slist* Get() const { return Lines.get(); }

private:
	struct FCleanup
	{
		void operator()(curl_slist* List) const { curl_slist_free_all(List); }
	};

	static std::string_view NameOf(std::string_view Line);
	void AddLine(const char* Line);

	std::unique_ptr<curl_slist, FCleanup> Lines;
};
