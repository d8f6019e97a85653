#pragma once

#include <functional>
#include <memory>
#include <utility>

template <class Signature>
class TUniqueFunction;

/** A callable that is moved, never copied: a task may own what it captured. */
template <class Result, class... Args>
class TUniqueFunction<Result(Args...)>
{
public:
	TUniqueFunction() = default;
	template <class Callable>
	requires(!std::is_same_v<std::decay_t<Callable>, TUniqueFunction>) TUniqueFunction(Callable&& Body)
		: Target(std::make_unique<TTarget<std::decay_t<Callable>>>(std::forward<Callable>(Body)))
	{
	}

	explicit operator bool() const { return Target != nullptr; }
	Result operator()(Args... Arguments) const { return Target->Call(std::forward<Args>(Arguments)...); }

private:
	struct FTarget
	{
		virtual ~FTarget() = default;
		virtual Result Call(Args... Arguments) = 0;
	};

	template <class Callable>
	struct TTarget final : FTarget
	{
		explicit TTarget(Callable InBody)
			: Body(std::move(InBody))
		{
		}
		Result Call(Args... Arguments) override { return Body(std::forward<Args>(Arguments)...); }
		Callable Body;
	};

	std::unique_ptr<FTarget> Target;
};

template <class Signature>
class TFunction;

/** A callable that may be copied; empty until one is given. */
template <class Result, class... Args>
class TFunction<Result(Args...)>
{
public:
	TFunction() = default;
	template <class Callable>
	requires(!std::is_same_v<std::decay_t<Callable>, TFunction>) TFunction(Callable&& Body)
		: Target(std::forward<Callable>(Body))
	{
	}

	explicit operator bool() const { return Target != nullptr; }
	Result operator()(Args... Arguments) const { return Target(std::forward<Args>(Arguments)...); }

private:
	std::function<Result(Args...)> Target;
};
