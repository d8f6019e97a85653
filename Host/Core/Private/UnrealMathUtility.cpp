#include "Math/UnrealMathUtility.h"

#include <random>

float FMath::FRand()
{
	thread_local std::minstd_rand Source{std::random_device{}()};
	return std::uniform_real_distribution<float>(0.0f, 1.0f)(Source);
}
