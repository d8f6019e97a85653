// The bodies behind the golden headers, so that the generated code has something to call.
#include "SampleLibrary.h"

#include "SampleNode.h"
#include "UObject/UObjectGlobals.h"

USampleLibrary::USampleLibrary(const FObjectInitializer& ObjectInitializer)
	: Super(ObjectInitializer)
{
	text = TEXT("made with an initializer");
}

int32 USampleLibrary::mix(TArray<FSampleRecord>, const TMap<FString, FString>&, bool, uint8, float, FString&, TArray<FString>&, int64,
	ESampleKind, const FString&, FString, float, bool, USampleNode*)
{
	return 0;
}

const FString& USampleLibrary::getText() const
{
	return text;
}

const USampleLibrary* USampleLibrary::find(const USampleLibrary* library)
{
	return library;
}

void USampleLibrary::onDone(const FString message, const TArray<FString>& lines)
{
	heard = message + lines[0];
}

USampleNode* USampleNode::start(FSampleRecord record)
{
	USampleNode* Node = NewObject<USampleNode>();
	Node->held = record;
	return Node;
}
