#pragma once

#include "Containers/UnrealString.h"

#include <functional>
#include <vector>

/**
 * The untyped part of an event: a list of handlers called in binding order over a copy of the list, so a handler may
 * bind, unbind and broadcast. Arguments travel as one address per parameter. Thread: game thread.
 */
class FMulticastScriptDelegate
{
public:
	using FHandler = std::function<void(void* const* Arguments)>;

	/** Binds a callable for a script. @return a number for RemoveHandler, never 0. */
	uint64 AddHandler(FHandler Handler);
	/** @return false when there is no such handler any more. */
	bool RemoveHandler(uint64 Number);
	/** Removes every handler, those of native code too. */
	void Clear() { Bindings.clear(); }
	bool IsBound() const { return !Bindings.empty(); }

	void Process(void* const* Arguments) const;

protected:
	/** Binds under an identity, unless that identity is bound already. A handler whose object is gone does nothing. */
	void AddUnique(const void* Object, const TCHAR* FunctionName, FHandler Handler);

private:
	struct FBinding
	{
		uint64 Number;
		const void* Object; // identity only, never followed
		FString FunctionName;
		FHandler Handler;
	};

	std::vector<FBinding> Bindings;
	uint64 LastNumber = 0;
};
