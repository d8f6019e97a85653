#pragma once

#include <functional>
#include <utility>
#include <vector>

/** An event for native code, without parameters. Thread: game thread. */
class FSimpleMulticastDelegate
{
public:
	/** The object must stay until RemoveAll was called for it. */
	template <class ObjectType>
	void AddRaw(ObjectType* Object, void (ObjectType::*Method)())
	{
		Bindings.emplace_back(Object, [Object, Method] { (Object->*Method)(); });
	}

	void RemoveAll(const void* Object)
	{
		std::erase_if(Bindings, [Object](const auto& Binding) { return Binding.first == Object; });
	}

	void Broadcast() const
	{
		for (const auto& [Object, Call] : std::vector(Bindings)) // a handler may unbind
		{
			Call();
		}
	}

private:
	std::vector<std::pair<const void*, std::function<void()>>> Bindings;
};

class FCoreDelegates
{
public:
	/** The program is about to end; all objects and modules are still there. */
	static FSimpleMulticastDelegate OnPreExit;
};
