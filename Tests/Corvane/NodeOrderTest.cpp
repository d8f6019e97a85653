#include "NodeFixture.h"

#include <algorithm>
#include <set>

namespace
{
	/** What may happen to a node, each at most once, in any order. */
	enum class Step
	{
		Start,
		Cancel,
		Answer,
		Tick,
		Collect
	};
	const std::vector<Step> allSteps = {Step::Start, Step::Cancel, Step::Answer, Step::Tick, Step::Collect};

	std::string describe(const std::vector<Step>& order, size_t number)
	{
		static const char* const names[] = {"start", "cancel", "answer", "tick", "collect"};
		std::string text;
		for (size_t index = 0; index < number; ++index)
		{
			text += std::string(index ? ", " : "") + names[static_cast<size_t>(order[index])];
		}
		return text;
	}

	/** Whether a graph keeps the node, as it does until the node has ended, or drops it at once. */
	class NodeOrder : public NodeFixture, public testing::WithParamInterface<std::tuple<const char*, bool>>
	{
	protected:
		/** Does one step. */
		void run(Step step, FGameLoop& game, const NodeOrigin& origin, Gate& gate)
		{
			switch (step)
			{
			case Step::Start:
			{
				UAsyncNodeCorv* node = nodeKind(std::get<0>(GetParam())).make(site(origin), "Node");
				std::get<1>(GetParam()) ? startHeld(node) : start(node);
				break;
			}
			case Step::Cancel:
				UCorvaneBPLibrary::cancelRequest("Node");
				break;
			case Step::Answer:
				gate.open();
				// As far as the answer gets without a tick: not at all when the game thread has to call it back.
				if (!callbacksNeedTicks && UCorvaneBPLibrary::hasPendingWork())
				{
					waitFor([] { return !UCorvaneBPLibrary::hasPendingWork(); });
				}
				break;
			case Step::Tick:
				game.Tick();
				break;
			case Step::Collect:
				game.CollectGarbage();
				break;
			}
		}

		void forgetResults()
		{
			held.clear();
			outcomes.clear();
			completions.clear();
		}
		size_t results() const { return outcomes.size() + completions.size(); }
	};

	std::string orderName(const testing::TestParamInfo<std::tuple<const char*, bool>>& test)
	{
		return std::string(std::get<0>(test.param)) + (std::get<1>(test.param) ? "Held" : "Dropped");
	}
} // namespace

TEST_P(NodeOrder, BringsExactlyOneResultInEveryOrder)
{
	LogCapture log;
	std::vector<Step> order = allSteps;
	do
	{
		Gate gate;
		const NodeOrigin origin(&gate);
		for (const Step step : order)
		{
			run(step, loop, origin, gate);
		}
		drain();
		EXPECT_EQ(results(), 1u) << describe(order, order.size());
		EXPECT_EQ(library().getUAsyncNodeHttpRequest("Node"), nullptr) << describe(order, order.size());
		forgetResults();
	} while (std::next_permutation(order.begin(), order.end()));
}

TEST_P(NodeOrder, TheProgramMayEndBetweenAnyTwoSteps)
{
	LogCapture log;
	loop.Shutdown();
	std::vector<Step> order = allSteps;
	std::set<std::string> seen; // orders that begin alike end alike
	do
	{
		for (size_t number = 1; number <= order.size(); ++number)
		{
			const std::string what = describe(order, number);
			if (what.find("start") == what.npos || !seen.insert(what).second)
			{
				continue;
			}
			Gate gate;
			const NodeOrigin origin(&gate);
			FGameLoop game;
			record(library());
			for (size_t index = 0; index < number; ++index)
			{
				run(order[index], game, origin, gate);
			}
			game.Shutdown();
			EXPECT_LE(results(), 1u) << what;
			forgetResults();
		}
	} while (std::next_permutation(order.begin(), order.end()));
}

INSTANTIATE_TEST_SUITE_P(Kinds, NodeOrder, testing::Combine(testing::Values("Get", "Download"), testing::Bool()), orderName);
