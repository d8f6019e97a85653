#include "JsonValues.h"

#include "CorvaneBPLibrary.h"
#include "InputError.h"
#include "Value.h"

#include <gtest/gtest.h>

namespace
{
	struct WordCase
	{
		const FPropertyType& type;
		std::string word;
		std::string json; // empty = refused
	};

	const FPropertyType& textType = PropertyTypeOf<FString>();
	const FPropertyType& listType = PropertyTypeOf<TArray<FString>>();
	const FPropertyType& mapType = PropertyTypeOf<TMap<FString, FString>>();
	const FPropertyType& enumType = PropertyTypeOf<EHTTPCorvFileDownloadResumeType>();
	const std::string deep = std::string(60'000, '[') + "1" + std::string(60'000, ']');

	const WordCase wordCases[] = {
		{PropertyTypeOf<bool>(), "1", ""},
		{PropertyTypeOf<int32>(), "1.0", ""},
		{PropertyTypeOf<int64>(), "9223372036854775807", "9223372036854775807"},
		{PropertyTypeOf<int64>(), "9223372036854775808", ""},
		{PropertyTypeOf<float>(), "0.5", "0.5"},
		{textType, "12", "\"12\""},
		{textType, deep, '"' + deep + '"'},
		{PropertyTypeOf<FDateTime>(), "2024-02-29T12:34:56.789Z", "\"2024-02-29T12:34:56.789Z\""},
		{enumType, "e_resume", "\"E_RESUME\""},
		{enumType, "2", "\"E_RESUME\""},
		{enumType, "\xff", ""},
		{listType, R"(["b", "h\u00e9"])", "[\"b\",\"h\u00e9\"]"},
		{listType, "word", ""},
		{listType, deep, ""},
		{mapType, R"({"z": "1", "a": "2"})", R"({"z":"1","a":"2"})"},
		{mapType, R"([["z", "1"], ["a", "2"]])", R"({"z":"1","a":"2"})"},
		{mapType, R"([["z"]])", ""},
		{mapType, "word", ""},
		{PropertyTypeOf<UCorvaneBPLibrary*>(), "null", ""},
		{PropertyTypeOf<TArray<uint8>>(), "[1]\xff", R"({"bytes":[91,49,93,255],"subtype":null})"},
	};
} // namespace

TEST(Word, BecomesAValueOrIsRefused)
{
	for (const WordCase& tested : wordCases)
	{
		Reflect::Value value(tested.type);
		const Program::Json json = Program::parseWord(tested.word, tested.type);
		if (tested.json.empty())
		{
			EXPECT_THROW(Reflect::readValue(tested.type, Program::JsonSource(json), value.get()), Reflect::InputError) << tested.word;
			continue;
		}
		Reflect::readValue(tested.type, Program::JsonSource(json), value.get());
		Program::JsonSink sink;
		Reflect::writeValue(tested.type, value.get(), sink);
		EXPECT_EQ(sink.take().dump(), tested.json);
	}
}
