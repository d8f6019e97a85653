#include "HeaderMap.h"

#include <algorithm>

const FHeaderMap::FHeader* FHeaderMap::Find(const FString& Name) const
{
	const auto Found = std::find_if(Headers.begin(), Headers.end(), [&Name](const FHeader& Header) { return Header.first == Name; });
	return Found == Headers.end() ? nullptr : &*Found;
}

void FHeaderMap::Set(const FString& Name, const FString& Value)
{
	if (FHeader* Known = const_cast<FHeader*>(Find(Name)))
	{
		*Known = {Name, Value}; // the new spelling too, as in a map of the engine
	}
	else
	{
		Headers.emplace_back(Name, Value);
	}
}

void FHeaderMap::Append(FString Name, FString Value)
{
	if (FHeader* Known = const_cast<FHeader*>(Find(Name)))
	{
		Known->second += TEXT(", ");
		Known->second += Value;
	}
	else
	{
		Headers.emplace_back(std::move(Name), std::move(Value));
	}
}

FString FHeaderMap::Get(const FString& Name) const
{
	const FHeader* Known = Find(Name);
	return Known ? Known->second : FString();
}

TArray<FString> FHeaderMap::GetAll() const
{
	TArray<FString> Lines;
	Lines.Reserve(static_cast<int32>(Headers.size()));
	for (const auto& [Name, Value] : Headers)
	{
		FString Line;
		Line.Reserve(Name.Len() + 2 + Value.Len());
		Line += Name;
		Line += TEXT(": ");
		Line += Value;
		Lines.Add(std::move(Line));
	}
	return Lines;
}
