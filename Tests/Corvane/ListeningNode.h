#pragma once

#include "UAsyncNodeCorv.h"
#include "UObject/Class.h"

#include <vector>

/** What a node sees, without the pins of a real one. */
class UListeningNode : public UAsyncNodeCorv
{
public:
	static UClass* StaticClass()
	{
		static const FClassDefinition definition{
			"ListeningNode", &UAsyncNodeCorv::StaticClass, &ConstructObject<UListeningNode>, {}, {}, {}};
		static UClass listeningNodeClass(definition);
		return &listeningNodeClass;
	}

	void httpRequestComplete(
		FString, const TArray<FString>&, const TArray<FString>&, int32 inStatusCode, const TArray<uint8>&, FString) override
	{
		statusCodes.push_back(inStatusCode);
	}

	std::vector<int32> statusCodes;
};
