#pragma once

#include "Containers/UnrealString.h"

#include <functional>

/** The hash that goes with operator==: text ignores the case of ASCII letters in both. */
template <class K>
struct TKeyHash
{
	size_t operator()(const K& Key) const { return std::hash<K>()(Key); }
};

template <>
struct TKeyHash<FString>
{
	size_t operator()(const FString& Key) const { return GetTypeHash(Key); }
};
