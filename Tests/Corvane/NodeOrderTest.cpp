#include "NodeFixture.h"

#include <algorithm>
#include <set>

namespace
{
	/** What may happen to a node, each at most once, in any order: answer, cancel, garbage collection, start, tick. */
	const std::string allSteps = "acgst";

	/** Whether a graph keeps the node, as it does until the node has ended, or drops it at once. */
	class NodeOrder : public NodeFixture, public testing::WithParamInterface<std::tuple<const char*, bool>>
	{
	protected:
		void startNode(const NodeOrigin& origin)
		{
			UAsyncNodeCorv* node = nodeKind(std::get<0>(GetParam())).make(pins(origin), "Node");
			std::get<1>(GetParam()) ? startHeld(node) : start(node);
		}

		void letAnswerComeWithoutATick(Lab::Gate& gate)
		{
			gate.open();
			// Not far when the game thread has to call it back.
			if (!callbacksNeedTicks && UCorvaneBPLibrary::hasPendingWork())
			{
				waitFor([] { return !UCorvaneBPLibrary::hasPendingWork(); });
			}
		}

		void run(const std::string& order, FGameLoop& game, const NodeOrigin& origin, Lab::Gate& gate)
		{
			const std::map<char, std::function<void()>> steps = {{'a', [&] { letAnswerComeWithoutATick(gate); }},
				{'c', [] { UCorvaneBPLibrary::cancelRequest("Node"); }}, {'g', [&] { game.CollectGarbage(); }},
				{'s', [&] { startNode(origin); }}, {'t', [&] { game.Tick(); }}};
			for (const char step : order)
			{
				steps.at(step)();
			}
		}

		/** @return how many results there were; they are forgotten. */
		size_t countResults()
		{
			held.clear();
			return std::exchange(outcomes, {}).size() + std::exchange(completions, {}).size();
		}
	};
} // namespace

TEST_P(NodeOrder, BringsExactlyOneResultInEveryOrder)
{
	std::string order = allSteps;
	do
	{
		Lab::Gate gate;
		const NodeOrigin origin(Lab::hold(gate));
		run(order, loop, origin, gate);
		drain();
		EXPECT_EQ(countResults(), 1u) << order;
		EXPECT_EQ(library().getUAsyncNodeHttpRequest("Node"), nullptr) << order;
	} while (std::next_permutation(order.begin(), order.end()));
}

TEST_P(NodeOrder, TheProgramMayEndBetweenAnyTwoSteps)
{
	loop.Shutdown();
	std::string order = allSteps;
	std::set<std::string> beginnings;
	do
	{
		for (size_t number = order.find('s') + 1; number <= order.size(); ++number)
		{
			beginnings.insert(order.substr(0, number));
		}
	} while (std::next_permutation(order.begin(), order.end()));
	for (const std::string& steps : beginnings)
	{
		Lab::Gate gate;
		const NodeOrigin origin(Lab::hold(gate));
		FGameLoop game;
		record(library());
		run(steps, game, origin, gate);
		game.Shutdown();
		EXPECT_LE(countResults(), 1u) << steps;
	}
}

INSTANTIATE_TEST_SUITE_P(Kinds, NodeOrder, testing::Combine(testing::Values("Get", "Download"), testing::Bool()),
	[](const auto& test) { return std::get<0>(test.param) + std::string(std::get<1>(test.param) ? "Held" : "Dropped"); });
