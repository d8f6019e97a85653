#include "CallFrame.h"

#include "InputError.h"

#include <fmt/format.h>

#include <charconv>
#include <cstring>

namespace Reflect
{
	namespace
	{
		/** A default as it was declared. The header tool let only those pass that suit their type. */
		class DeclaredDefault : public Source
		{
		public:
			explicit DeclaredDefault(std::string_view declared)
				: spelling(declared)
			{
			}

			std::optional<bool> boolean() const override { return spelling == "true"; }
			std::optional<int64> integer() const override { return parsed<int64>(); }
			std::optional<double> number() const override { return parsed<double>(); }
			std::optional<std::string_view> text() const override { return spelling; }
			std::optional<UObject*> object(const FPropertyType&) const override { return nullptr; }
			[[noreturn]] void refuse(const FPropertyType& expected) const override
			{
				throw std::logic_error(fmt::format("the default '{}' is no {}", spelling, typeName(expected)));
			}

		private:
			template <class T>
			std::optional<T> parsed() const
			{
				T value{};
				const std::from_chars_result result = std::from_chars(spelling.data(), spelling.data() + spelling.size(), value);
				return result.ec == std::errc() ? std::optional(value) : std::nullopt;
			}

			const std::string_view spelling;
		};
	} // namespace

	CallFrame::CallFrame(const Function& calledFunction)
		: called(calledFunction)
	{
		arguments.reserve(called.function->Parameters.size());
		for (const FParameter& declared : called.function->Parameters)
		{
			const Value& value = arguments.emplace_back(declared.Type());
			if (declared.Default)
			{
				readValue(value.type(), DeclaredDefault(declared.Default), value.get());
			}
		}
	}

	template <class Accept>
	std::optional<size_t> CallFrame::find(std::string_view pin, Accept accepts) const
	{
		for (size_t index = 0; index < arguments.size(); ++index)
		{
			if (accepts(parameter(index).Kind) && equalNames(parameter(index).Name, pin))
			{
				return index;
			}
		}
		return std::nullopt;
	}

	std::optional<size_t> CallFrame::findInput(std::string_view pin) const
	{
		return find(pin, isInput);
	}

	std::optional<size_t> CallFrame::findOutput(std::string_view pin) const
	{
		return find(pin, isOutput);
	}

	void CallFrame::set(size_t index, std::string_view pin, const Source& source)
	{
		try
		{
			readValue(arguments[index].type(), source, arguments[index].get());
		}
		catch (const InputError& error)
		{
			throw error.inside(fmt::format("{}: pin '{}'", called.name, pin));
		}
	}

	void CallFrame::invoke(UObject* self)
	{
		std::vector<void*> addresses;
		for (const Value& argument : arguments)
		{
			addresses.push_back(argument.get());
		}
		called.function->Invoke(self, addresses.data());
	}

	void CallFrame::writeOutputs(Sink& sink) const
	{
		sink.newMap();
		for (size_t index = 0; index < arguments.size(); ++index)
		{
			if (isOutput(parameter(index).Kind))
			{
				writeParameter(parameter(index), arguments[index].get(), sink);
			}
		}
	}

	UObject* CallFrame::returnedObject() const
	{
		UObject* object = nullptr;
		std::memcpy(&object, arguments.back().get(), sizeof(object));
		return object;
	}
} // namespace Reflect
