#pragma once

#include "ValueTransfer.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/** Values of reflected types as JSON and as words of a command line. */
namespace Program
{
	using Json = nlohmann::ordered_json; // pins keep their order

	/** @return a word for a pin of a type: as it stands for texts and bytes, else as JSON, and as a text when it is none. */
	Json parseWord(std::string word, const FPropertyType& type);

	/** A JSON value, read by its own type; a map is an object or a list of [key, value]. */
	class JsonSource : public Reflect::Source
	{
	public:
		/** @param value  has to live as long as the source. */
		explicit JsonSource(const Json& value)
			: json(value)
		{
		}

		std::optional<bool> boolean() const override;
		std::optional<int64> integer() const override;
		std::optional<double> number() const override;
		std::optional<std::string_view> text() const override;
		bool list(const Visitor& element) const override;
		bool map(const Visitor& key, const Visitor& value) const override;
		[[noreturn]] void refuse(const FPropertyType& expected) const override;

	private:
		const Json& json;
	};

	/** Bytes become JSON's binary type, records and objects a text that names their type. */
	class JsonSink : public Reflect::Sink
	{
	public:
		/** @return the value on top, which is taken away. */
		Json take();

		void boolean(bool value) override { values.emplace_back(value); }
		void integer(int64 value) override { values.emplace_back(value); }
		void number(double value) override { values.emplace_back(value); }
		void text(std::string_view utf8) override { values.emplace_back(utf8); }
		void bytes(std::span<const uint8> value) override;
		void enumerator(const UEnum& enumeration, int64 value) override;
		void record(const FPropertyType& type, const void* value) override;
		void object(const FPropertyType& type, UObject* object) override;
		void newList(int32) override { values.push_back(Json::array()); }
		void addElement(int32 index) override;
		void newMap() override { values.push_back(Json::object()); }
		void addPair() override;

	private:
		std::vector<Json> values;
	};
} // namespace Program
