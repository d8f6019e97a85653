#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

#include <string_view>
#include <utility>
#include <vector>

/** Headers in the order in which their names came. Names ignore case. */
class FHeaderMap
{
public:
	/** Replaces the value in place when the header is there. */
	void Set(const FString& Name, const FString& Value);
	/** Puts the value after that of a header that is there, as a list. */
	void Append(FString Name, FString Value);
	bool Contains(const FString& Name) const { return Find(Name) != nullptr; }
	/** @return empty when absent. */
	FString Get(const FString& Name) const;
	/** @return each header as "Name: value". */
	TArray<FString> GetAll() const;

	auto begin() const { return Headers.begin(); }
	auto end() const { return Headers.end(); }

private:
	using FHeader = std::pair<FString, FString>;

	const FHeader* Find(const FString& Name) const;

	std::vector<FHeader> Headers;
};
