#include "Lab/Plans/Behaviour.h"

#include <algorithm>
#include <random>

namespace Lab
{
	namespace
	{
		Behaviour onlyWhen(std::function<bool(const Request&)> applies, Behaviour behaviour)
		{
			return Behaviour(
				[applies, behaviour](const Request& request, Plan& plan)
				{
					if (applies(request))
					{
						behaviour.answer(request, plan);
					}
				},
				[applies, behaviour](const Request& request, Intake& intake)
				{
					if (applies(request))
					{
						behaviour.take(request, intake);
					}
				});
		}
	} // namespace

	Behaviour::Behaviour(Answering answering, Taking taking)
		: parts(std::make_shared<std::vector<Part>>(1, Part{std::move(answering), std::move(taking)}))
	{
	}

	Behaviour::Behaviour(std::vector<Behaviour> behaviours)
	{
		std::vector<Part> all;
		for (const Behaviour& behaviour : behaviours)
		{
			all.insert(all.end(), behaviour.parts->begin(), behaviour.parts->end());
		}
		parts = std::make_shared<std::vector<Part>>(std::move(all));
	}

	Behaviour::Behaviour(std::string text)
		: Behaviour([text = std::move(text)](const Request&, Plan& plan) { plan.setText(text); })
	{
	}

	void Behaviour::answer(const Request& request, Plan& plan) const
	{
		for (const Part& part : *parts)
		{
			part.answering(request, plan);
		}
	}

	void Behaviour::take(const Request& request, Intake& intake) const
	{
		for (const Part& part : *parts)
		{
			if (part.taking)
			{
				part.taking(request, intake);
			}
		}
	}

	Behaviour inTurn(std::vector<Behaviour> behaviours)
	{
		const auto chosen = [behaviours = std::move(behaviours)](const Request& request) -> const Behaviour&
		{ return behaviours.at(std::min(static_cast<std::size_t>(request.visit), behaviours.size()) - 1); };
		return Behaviour([chosen](const Request& request, Plan& plan) { chosen(request).answer(request, plan); },
			[chosen](const Request& request, Intake& intake) { chosen(request).take(request, intake); });
	}

	Behaviour onlyFirst(int requests, Behaviour behaviour)
	{
		return onlyWhen([requests](const Request& request) { return request.visit <= requests; }, std::move(behaviour));
	}

	Behaviour sometimes(double share, Behaviour behaviour, unsigned seed)
	{
		const auto applies = [share, seed](const Request& request)
		{
			std::mt19937_64 random(request.number * 0x9E3779B97F4A7C15U + seed);
			return std::uniform_real_distribution<double>()(random) < share;
		};
		return onlyWhen(applies, std::move(behaviour));
	}
} // namespace Lab
