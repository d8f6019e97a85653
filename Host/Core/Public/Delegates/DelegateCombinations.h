#pragma once

#include "Delegates/Delegate.h"
#include "Delegates/ScriptDelegates.h"

#include <string_view>
#include <type_traits>

/** An event with typed parameters. Parameter types may be const values or const references. */
template <class... Args>
class TDynamicMulticastDelegate : public FMulticastScriptDelegate
{
public:
	/** Calls every handler in binding order. Thread: game thread. */
	void Broadcast(Args... Arguments) const
	{
		void* const Addresses[] = {const_cast<void*>(static_cast<const void*>(&Arguments))..., nullptr};
		Process(Addresses);
	}

	template <class ObjectType>
	void InternalAddUniqueDynamic(ObjectType* Object, void (ObjectType::*Method)(Args...), const TCHAR* FunctionName)
	{
		AddUnique(Object, FunctionName,
			[Weak = TWeakObjectPtr<ObjectType>(Object), Method](void* const* Arguments)
			{
				if (ObjectType* Alive = Weak.Get())
				{
					Call(Alive, Method, Arguments, std::index_sequence_for<Args...>());
				}
			});
	}

private:
	template <class ObjectType, size_t... Index>
	static void Call(ObjectType* Object, void (ObjectType::*Method)(Args...), void* const* Arguments, std::index_sequence<Index...>)
	{
		(Object->*Method)(*static_cast<std::remove_reference_t<Args>*>(Arguments[Index])...);
	}
};

namespace DelegatesPrivate
{
	/** "&UFoo::bar" to "bar". */
	constexpr const TCHAR* FunctionName(const TCHAR* MethodText)
	{
		return MethodText + std::basic_string_view<TCHAR>(MethodText).rfind(TEXT(':')) + 1;
	}
} // namespace DelegatesPrivate

/** Method is written as &Class::Function; object and function name together are bound at most once. */
#define AddUniqueDynamic(Object, Method) InternalAddUniqueDynamic(Object, Method, DelegatesPrivate::FunctionName(TEXT(#Method)))

// Use: DECLARE_...(FName, Type1, Name1, ...); the names are for the header tool.
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_OneParam(Delegate, T1, N1) \
	class Delegate : public TDynamicMulticastDelegate<T1> \
	{ \
	}
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(Delegate, T1, N1, T2, N2) \
	class Delegate : public TDynamicMulticastDelegate<T1, T2> \
	{ \
	}
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_FourParams(Delegate, T1, N1, T2, N2, T3, N3, T4, N4) \
	class Delegate : public TDynamicMulticastDelegate<T1, T2, T3, T4> \
	{ \
	}
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_FiveParams(Delegate, T1, N1, T2, N2, T3, N3, T4, N4, T5, N5) \
	class Delegate : public TDynamicMulticastDelegate<T1, T2, T3, T4, T5> \
	{ \
	}
#define DECLARE_DYNAMIC_MULTICAST_DELEGATE_SixParams(Delegate, T1, N1, T2, N2, T3, N3, T4, N4, T5, N5, T6, N6) \
	class Delegate : public TDynamicMulticastDelegate<T1, T2, T3, T4, T5, T6> \
	{ \
	}
