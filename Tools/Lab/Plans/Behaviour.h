#pragma once

#include "Lab/Plans/Plan.h"

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Lab
{
	/**
	 * Something that an origin does to a request: a value that may be copied, kept and put together with others. It holds no
	 * state, so what it does depends on the request alone. Thread: any.
	 */
	class Behaviour
	{
	public:
		using Answering = std::function<void(const Request&, Plan&)>;
		using Taking = std::function<void(const Request&, Intake&)>;

		/** @param answering  changes the plan that earlier behaviours have made. @param taking  the same for the intake. */
		explicit Behaviour(Answering answering, Taking taking = {});
		/** Several in a row. */
		Behaviour(std::vector<Behaviour> behaviours);
		/** A plain text. */
		Behaviour(const char* text)
			: Behaviour(std::string(text))
		{
		}
		Behaviour(std::string text);
		/** Decides by the request, once that is there with its body. */
		template <std::invocable<const Request&> Decide>
		Behaviour(Decide decide)
			: Behaviour(
				  [decide = std::move(decide)](const Request& request, Plan& plan) { Behaviour(decide(request)).answer(request, plan); })
		{
		}

		void answer(const Request& request, Plan& plan) const;
		void take(const Request& request, Intake& intake) const;

	private:
		struct Part
		{
			Answering answering;
			Taking taking;
		};
		std::shared_ptr<const std::vector<Part>> parts;
	};

	/** The first for the first request of a method and target, the second for the next; the last for all that follow. */
	Behaviour inTurn(std::vector<Behaviour> behaviours);
	/** Only for the first requests of a method and target. */
	Behaviour onlyFirst(int requests, Behaviour behaviour);
	/** Only for some requests, the same ones in each run. @param share  of the requests, 0 to 1. */
	Behaviour sometimes(double share, Behaviour behaviour, unsigned seed = 0);
} // namespace Lab
