#include "Delegates/ScriptDelegates.h"

uint64 FMulticastScriptDelegate::AddHandler(FHandler Handler)
{
	Bindings.push_back({++LastNumber, nullptr, FString(), std::move(Handler)});
	return LastNumber;
}

bool FMulticastScriptDelegate::RemoveHandler(uint64 Number)
{
	return std::erase_if(Bindings, [Number](const FBinding& Binding) { return Binding.Number == Number; }) > 0;
}

void FMulticastScriptDelegate::Process(void* const* Arguments) const
{
	const std::vector<FBinding> Copy = Bindings;
	for (const FBinding& Binding : Copy)
	{
		Binding.Handler(Arguments);
	}
}

void FMulticastScriptDelegate::AddUnique(const void* Object, const TCHAR* FunctionName, FHandler Handler)
{
	for (const FBinding& Binding : Bindings)
	{
		if (Binding.Object == Object && Binding.FunctionName == FunctionName)
		{
			return;
		}
	}
	Bindings.push_back({++LastNumber, Object, FString(FunctionName), std::move(Handler)});
}
