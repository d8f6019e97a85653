#pragma once

#include "Containers/UnrealString.h"

namespace ELogVerbosity
{
	enum Type
	{
		Error,
		Warning,
		Display
	};
} // namespace ELogVerbosity

namespace LogPrivate
{
	void Write(const char* Category, ELogVerbosity::Type Verbosity, const FString& Line);
} // namespace LogPrivate

/** Writes one line to the log. Format is a TEXT literal. Thread: any. */
#define UE_LOG(Category, Verbosity, Format, ...) \
	LogPrivate::Write(#Category, ELogVerbosity::Verbosity, FString::Printf(Format __VA_OPT__(, ) __VA_ARGS__))
