#pragma once

#include "CoreMinimal.h"

class UAsyncNodeCorv;

/** The steps that the latent nodes have in common; each class keeps its own order. Thread: game thread. */
namespace CorvaneNode
{
	/**
	 * Makes a new node the receiver of the results of an ID, in place of an earlier node.
	 * @param optionalRequestID  empty = a new GUID.
	 * @return the ID.
	 */
	FString takeID(UAsyncNodeCorv& node, const FString& optionalRequestID);

	/** A node waits no more. It gives up its ID, unless a later node has taken that over. */
	void giveUpID(UAsyncNodeCorv& node, const FString& requestID);

	/** What counts as success; a file-info node has a rule of its own. */
	bool isSuccess(int32 statusCode);

	/** The end of a node of a class that does not destroy itself. */
	void release(UAsyncNodeCorv& node);
} // namespace CorvaneNode
