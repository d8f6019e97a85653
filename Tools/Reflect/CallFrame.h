#pragma once

#include "Reflection.h"
#include "Value.h"
#include "ValueTransfer.h"

namespace Reflect
{
	/**
	 * The arguments of one call: made with their declared defaults, set one by one, then handed to the function. Thread:
	 * game thread.
	 */
	class CallFrame
	{
	public:
		explicit CallFrame(const Function& calledFunction);

		/** @return the place of the pin among the parameters; nothing when there is no pin of that name that takes input. */
		std::optional<size_t> findInput(std::string_view pin) const;
		/** @return the place of the pin among the parameters; nothing when there is no pin of that name that gives output. */
		std::optional<size_t> findOutput(std::string_view pin) const;

		const FParameter& parameter(size_t index) const { return called.function->Parameters[index]; }
		/** The value of one parameter: before the call its input, afterwards its output; what was input only is used up then. */
		const Value& operator[](size_t index) const { return arguments[index]; }

		/** Sets an input pin. Throws InputError, which names function and pin. @param pin  its name as the caller wrote it. */
		void set(size_t index, std::string_view pin, const Source& source);
		/** Calls the function. @param self  the object of a method, null for a static function. */
		void invoke(UObject* self = nullptr);
		/** Puts a map from the names of all output pins to their values on top. */
		void writeOutputs(Sink& sink) const;
		/** @return what a function that returns an object has returned. */
		UObject* returnedObject() const;

	private:
		template <class Accept>
		std::optional<size_t> find(std::string_view pin, Accept accepts) const;

		const Function& called;
		std::vector<Value> arguments;
	};
} // namespace Reflect
