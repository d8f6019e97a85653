#pragma once

#include "Reflection.h"
#include "Value.h"

#include <optional>

namespace Script
{
	/**
	 * The arguments of one call: made with their declared defaults, set one by one, then handed to the function. Thread:
	 * game thread.
	 */
	class CallFrame
	{
	public:
		explicit CallFrame(const UFunction& calledFunction);

		/** @return the place of the pin among the parameters; nothing when there is no pin of that name that takes input. */
		std::optional<size_t> findInput(std::string_view pin) const;
		/** @return the place of the pin among the parameters; nothing when there is no pin of that name that gives output. */
		std::optional<size_t> findOutput(std::string_view pin) const;

		const FParameter& parameter(size_t index) const { return function.Parameters[index]; }
		size_t size() const { return function.Parameters.size(); }
		/** The value of one parameter: before the call its input, afterwards its output. */
		Value& operator[](size_t index) { return arguments[index]; }
		const Value& operator[](size_t index) const { return arguments[index]; }

		/** Calls a static function. */
		void invoke();

	private:
		template <class Accept>
		std::optional<size_t> find(std::string_view pin, Accept accepts) const;

		const UFunction& function;
		std::vector<Value> arguments;
	};
} // namespace Script
