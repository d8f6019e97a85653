#include "UObject/Class.h"

#include "UObject/Object.h"

#include <algorithm>
#include <cstring>
#include <strings.h>
#include <vector>

namespace
{
	FCompiledInHeader* firstHeader = nullptr;
}

const char* FindMeta(FMetaList List, const char* Key)
{
	const auto Found = std::find_if(List.begin(), List.end(), [Key](const FMetaEntry& Entry) { return strcasecmp(Entry.Key, Key) == 0; });
	return Found == List.end() ? "" : Found->Value;
}

const FEnumerator* UEnum::FindByName(const char* EnumeratorName) const
{
	const auto Found = std::find_if(Enumerators.begin(), Enumerators.end(),
		[EnumeratorName](const FEnumerator& Enumerator) { return strcasecmp(Enumerator.Name, EnumeratorName) == 0; });
	return Found == Enumerators.end() ? nullptr : &*Found;
}

const FEnumerator* UEnum::FindByValue(int64 Value) const
{
	const auto Found =
		std::find_if(Enumerators.begin(), Enumerators.end(), [Value](const FEnumerator& Enumerator) { return Enumerator.Value == Value; });
	return Found == Enumerators.end() ? nullptr : &*Found;
}

bool UClass::IsChildOf(const UClass* Other) const
{
	for (const UClass* Class = this; Class; Class = Class->GetSuperClass())
	{
		if (Class == Other)
		{
			return true;
		}
	}
	return false;
}

FCompiledInHeader::FCompiledInHeader(const char* InModule, const char* InName, std::span<UClass* (*const)()> InClasses,
	std::span<const UScriptStruct* const> InStructs, std::span<const UEnum* const> InEnums,
	std::span<const UDelegateFunction* const> InDelegates)
	: Module(InModule)
	, Name(InName)
	, Classes(InClasses)
	, Structs(InStructs)
	, Enums(InEnums)
	, Delegates(InDelegates)
	, Next(firstHeader)
{
	firstHeader = this;
}

std::span<const FCompiledInHeader* const> GetCompiledInHeaders()
{
	static const std::vector<const FCompiledInHeader*> Sorted = []
	{
		std::vector<const FCompiledInHeader*> Headers;
		for (const FCompiledInHeader* Header = firstHeader; Header; Header = Header->Next)
		{
			Headers.push_back(Header);
		}
		std::sort(Headers.begin(), Headers.end(),
			[](const FCompiledInHeader* A, const FCompiledInHeader* B) { return std::strcmp(A->Name, B->Name) < 0; });
		return Headers;
	}();
	return Sorted;
}
