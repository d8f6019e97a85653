#pragma once

struct FMath
{
	template <class T>
	static constexpr T Min(const T A, const T B)
	{
		return A < B ? A : B;
	}

	template <class T>
	static constexpr T Max(const T A, const T B)
	{
		return A < B ? B : A;
	}

	template <class T>
	static constexpr T Clamp(const T Value, const T Low, const T High)
	{
		return Min(Max(Value, Low), High);
	}

	/** @return a number from 0 up to, but without, 1. Thread: any. */
	static float FRand();
};
