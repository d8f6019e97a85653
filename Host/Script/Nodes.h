#pragma once

#include "Lua.h"
#include "UObject/StrongObjectPtr.h"

#include <unordered_map>

namespace Script
{
	/** The nodes that a script has started and that have not ended. Thread: game thread. */
	class NodeHolds
	{
	public:
		void hold(UObject& node) { held.try_emplace(&node, &node); }
		void release(UObject& node) { held.erase(&node); }
		void releaseAll() { held.clear(); }

	private:
		std::unordered_map<UObject*, TStrongObjectPtr<UObject>> held;
	};

	/**
	 * Binds a new node's events, then activates it. The node is held from here until it raises one of its events, since
	 * nothing says that the script keeps it.
	 * @param node  null when the factory made none; then nothing happens.
	 * @param handlers  index of a table from event (light user datum) to Lua function.
	 */
	void startNode(lua_State* lua, UObject* node, int handlers);
} // namespace Script
