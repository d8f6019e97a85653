#pragma once

#include <functional>
#include <type_traits>
#include <utility>

template <class T>
struct TWeakObjectPtr;

template <class Signature>
class TDelegate;

/** A delegate with at most one binding. Bind it before the work starts that may execute it. */
template <class Result, class... Args>
class TDelegate<Result(Args...)>
{
public:
	/** Binds a method of an engine object. The object is held weakly, and kept from being freed while the method runs. */
	template <class ObjectType, class ClassType>
	requires std::is_void_v<Result>
	void BindUObject(ObjectType* Object, void (ClassType::*Method)(Args...))
	{
		Target = [Weak = TWeakObjectPtr<ObjectType>(Object), Method](Args... Arguments)
		{
			const auto Pin = Weak.Pin();
			if (ObjectType* Pinned = Pin.Get())
			{
				(Pinned->*Method)(std::forward<Args>(Arguments)...);
			}
		};
	}

	template <class Callable>
	static TDelegate CreateLambda(Callable&& Body)
	{
		TDelegate Bound;
		Bound.BindLambda(std::forward<Callable>(Body));
		return Bound;
	}

	template <class Callable>
	void BindLambda(Callable&& Body)
	{
		Target = std::forward<Callable>(Body);
	}

	bool IsBound() const { return static_cast<bool>(Target); }
	void Unbind() { Target = nullptr; }

	/** Something must be bound. */
	Result Execute(Args... Arguments) const { return Target(std::forward<Args>(Arguments)...); }

	/** @return false when nothing is bound. */
	bool ExecuteIfBound(Args... Arguments) const requires std::is_void_v<Result>
	{
		if (Target)
		{
			Target(std::forward<Args>(Arguments)...);
		}
		return IsBound();
	}

private:
	std::function<Result(Args...)> Target;
};
