#pragma once

#include "LoopbackListener.h"
#include "Wish.h"

#include <array>
#include <string>
#include <sys/types.h>

/** Two origins of the lab in a process of their own, so that their memory is not counted, and a port where nobody listens. */
class SoakOrigin
{
public:
	/** Before this process has any thread. */
	SoakOrigin();
	~SoakOrigin();
	SoakOrigin(const SoakOrigin&) = delete;
	SoakOrigin& operator=(const SoakOrigin&) = delete;

	/** @return scheme, host and port of where a wish goes. */
	std::string base(const Wish& wish) const;
	/** The address of a wish. @param place  such as "/get/". */
	std::string url(const std::string& place, const Wish& wish) const { return base(wish) + place + wish.text(); }

	static constexpr std::size_t number = 2;

private:
	std::array<int, number> ports{};
	const LoopbackListener closed{-1};
	pid_t process = 0;
};
