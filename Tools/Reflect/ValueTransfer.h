#pragma once

#include "UObject/Class.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/** How values of reflected types come from a language that has values of its own, and go there. Thread: game thread. */
namespace Reflect
{
	/** A value as somebody wrote it. Each question has no answer when the value is of another kind. */
	class Source
	{
	public:
		using Visitor = std::function<void(const Source&)>;

		virtual ~Source() = default;

		virtual std::optional<bool> boolean() const { return std::nullopt; }
		virtual std::optional<int64> integer() const { return std::nullopt; }
		virtual std::optional<double> number() const { return std::nullopt; }
		/** UTF-8, or bytes of any kind; valid as long as the source. */
		virtual std::optional<std::string_view> text() const { return std::nullopt; }
		/** @return the address of a record of a type; null = this is none. */
		virtual const void* record(const FPropertyType&) const { return nullptr; }
		/** Sets an array of a type, when this holds one in a single piece. @return false when it does not. */
		virtual bool wholeList(const FPropertyType&, void*) const { return false; }
		/** @return an object that fits a type, or null for no object. */
		virtual std::optional<UObject*> object(const FPropertyType&) const { return std::nullopt; }
		/** Visits every element. @return false when this is no list. */
		virtual bool list(const Visitor&) const { return false; }
		/** Visits each key and then its value. @return false when this is no map. */
		virtual bool map(const Visitor&, const Visitor&) const { return false; }

		/** Throws the InputError for a value of the wrong kind, or one that its type cannot hold. */
		[[noreturn]] virtual void refuse(const FPropertyType& expected) const = 0;
	};

	/** Where values go: each lands on top of those before it, until the list or map below it takes it away. */
	class Sink
	{
	public:
		virtual ~Sink() = default;

		virtual void boolean(bool value) = 0;
		virtual void integer(int64 value) = 0;
		virtual void number(double value) = 0;
		virtual void text(std::string_view utf8) = 0;
		virtual void bytes(std::span<const uint8> value) = 0;
		virtual void enumerator(const UEnum& enumeration, int64 value) = 0;
		virtual void record(const FPropertyType& type, const void* value) = 0;
		/** @param object  may be null. */
		virtual void object(const FPropertyType& type, UObject* object) = 0;
		/** Puts an empty list on top. */
		virtual void newList(int32 count) = 0;
		/** Takes the value on top and appends it to the list below. @param index  its place, from 0. */
		virtual void addElement(int32 index) = 0;
		/** Puts an empty map on top. */
		virtual void newMap() = 0;
		/** Takes the value on top and the key below it for the map below. */
		virtual void addPair() = 0;
		/** The map on top has all fields of a struct now. */
		virtual void endFields(const UScriptStruct&) {}
	};

	/** Sets a value of a type. Throws InputError when the source is no such value; it may be half set then. */
	void readValue(const FPropertyType& type, const Source& source, void* value);

	void writeValue(const FPropertyType& type, const void* value, Sink& sink);

	/** Adds a parameter's name and value to the map on top. */
	void writeParameter(const FParameter& parameter, const void* value, Sink& sink);

	/** Puts a map from the names of parameters to their values on top. @param values  one address per parameter. */
	void writeParameters(std::span<const FParameter> parameters, void* const* values, Sink& sink);

	/** @return whether a type is a list of bytes, which is one piece for a script. */
	bool isBytes(const FPropertyType& type);

	FString toFString(std::string_view utf8);
	std::string toUtf8(const FString& text);
} // namespace Reflect
