#pragma once

#include "Kismet/BlueprintAsyncActionBase.h"
#include "Lua.h"
#include "UObject/StrongObjectPtr.h"

#include <string>
#include <unordered_map>

namespace Script
{
	/** The nodes that a script has started and that have not ended. Thread: game thread. */
	class NodeHolds
	{
	public:
		NodeHolds() = default;
		~NodeHolds() { releaseAll(); }
		NodeHolds(const NodeHolds&) = delete;
		NodeHolds& operator=(const NodeHolds&) = delete;

		/** Keeps a node alive until it says that it is ready to be destroyed. @return false when it has said so already. */
		bool hold(UBlueprintAsyncActionBase& node);
		void releaseAll();

	private:
		std::unordered_map<UBlueprintAsyncActionBase*, TStrongObjectPtr<UBlueprintAsyncActionBase>> held;
	};

	/**
	 * Binds a new node's events, then activates it. The node is held from here until it has ended, since nothing says that
	 * the script keeps it.
	 * @param node  null when the factory made none; then nothing happens.
	 * @param handlers  index of a table from event (light user datum) to Lua function.
	 * @param place  of the factory's call, for what the script has forgotten.
	 * @return false when handlers were given that nothing will call: the node had ended before it could be bound.
	 */
	bool startNode(lua_State* lua, UObject* node, int handlers, const std::string& place);
} // namespace Script
