#pragma once

#include "Delegates/DelegateCombinations.h"

#include <type_traits>
#include <utility>

/**
 * Binds a function object to an event of the module, in a program that has no classes of its own with reflected functions.
 * @param Handler  takes the event's parameters, by value or constant reference, and is kept until it is removed.
 * @return a number for the event's RemoveHandler.
 * @note Thread: game thread, which is also where the handler runs.
 */
template <class... Args, class Handler>
uint64 Listen(TDynamicMulticastDelegate<Args...>& Event, Handler OnEvent)
{
	return Event.AddHandler(
		[OnEvent = std::move(OnEvent)](void* const* Arguments)
		{
			[&]<size_t... Index>(std::index_sequence<Index...>)
			{
				OnEvent(*static_cast<const std::remove_cvref_t<Args>*>(Arguments[Index])...);
			}
			(std::index_sequence_for<Args...>());
		});
}
