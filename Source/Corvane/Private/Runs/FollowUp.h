#pragma once

#include "CorvaneBPLibrary.h"
#include "Runs/CancelState.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

/** A request that continues what another one began, under the same ID. */
struct FCorvFollowUp
{
	FString requestID;
	/** Of the request before; what is built takes everything from it but its address and its completion object. */
	FhttpRequest record;
	/** Of the request before. */
	TSharedPtr<FCorvCancelState> cancelState;
	/** The node that waits for the result of all steps. */
	TWeakObjectPtr<UAsyncNodeCorv> node;
	/** Builds it; empty when the builder refused. Thread: game thread. */
	TUniqueFunction<TArray<FhttpRequest>()> build;
	/** Called instead of its start; may be unset. Thread: game thread. */
	TUniqueFunction<void(UCorvaneBPLibrary& library)> abandon;
};

namespace CorvaneFollowUp
{
	/**
	 * Builds and starts a request on the game thread, one task later. When a script has asked to cancel the ID meanwhile, or
	 * the builder refuses, the failed result goes out instead. Until then the library counts it as pending work.
	 * @note Thread: any.
	 */
	void start(UCorvaneBPLibrary* library, FCorvFollowUp followUp);

	/** @return whether a follow-up is being built: a builder that refuses then tells nobody, for one result ends all steps. Thread: game thread. */
	bool isBuilding();
} // namespace CorvaneFollowUp
