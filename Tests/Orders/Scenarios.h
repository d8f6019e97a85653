#pragma once

#include "World.h"

#include <string>
#include <vector>

namespace Orders
{
	/** One kind of work against one disturbance. */
	struct Scenario
	{
		std::string name;
		Disturbance disturbance;
		void (*play)(World& world);
		/** Looks at what is left when the program has ended; null = at nothing. */
		void (*look)(const World& world);
		/** So few points that every order can be tried. */
		bool isSmall;
	};

	const std::vector<Scenario>& scenarios();

	/** Plays one run and looks at what it leaves. @return the points it passed. */
	std::size_t playOnce(const Scenario& scenario, class Chooser& chooser);
} // namespace Orders
