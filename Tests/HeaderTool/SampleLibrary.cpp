// The bodies behind the golden headers, so that the generated code has something to call.
#include "SampleLibrary.h"

#include "SampleNode.h"
#include "UObject/UObjectGlobals.h"

USampleLibrary::USampleLibrary(const FObjectInitializer& ObjectInitializer)
	: Super(ObjectInitializer)
{
	text = TEXT("made with an initializer");
}

int32 USampleLibrary::mix(TArray<FSampleRecord> records, const TMap<FString, FString>& table, bool flag, uint8 small, float factor,
	FString& text, TArray<FString>& lines, int64 limit, ESampleKind kind, const FString& title, FString plain, float step, bool last,
	USampleNode* node)
{
	text = title + plain;
	lines.Add(title);
	const int32 counted = records.Num() + table.Num() + (flag ? 10 : 0) + (last ? 20 : 0) + small + static_cast<int32>(kind);
	const int32 scaled = static_cast<int32>(factor * 1000.0f + step * 10000.0f);
	return counted + scaled + static_cast<int32>(limit) + (node ? node->held.number : 0);
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
