#include "JsonValues.h"

#include "CorvaneBPLibrary.h"
#include "ScriptError.h"
#include "Value.h"

#include <gtest/gtest.h>

namespace
{
	struct Case
	{
		const FPropertyType& type;
		std::string word;
		const char* json; // null = refused
	};

	const std::string deep = std::string(60'000, '[') + "1" + std::string(60'000, ']');

	const Case cases[] = {
		{PropertyTypeOf<bool>(), "1", nullptr},
		{PropertyTypeOf<uint8>(), "256", nullptr},
		{PropertyTypeOf<int32>(), "2147483648", nullptr},
		{PropertyTypeOf<int32>(), "1.0", nullptr},
		{PropertyTypeOf<int64>(), "9223372036854775807", "9223372036854775807"},
		{PropertyTypeOf<float>(), "0.5", "0.5"},
		{PropertyTypeOf<float>(), "half", nullptr},
		{PropertyTypeOf<FString>(), "12", "\"12\""},
		{PropertyTypeOf<FString>(), "{\"a\": 1}", "\"{\\\"a\\\": 1}\""},
		{PropertyTypeOf<FString>(), "h\u00e9", "\"h\u00e9\""},
		{PropertyTypeOf<FDateTime>(), "2024-02-29T12:34:56.789Z", "\"2024-02-29T12:34:56.789Z\""},
		{PropertyTypeOf<FDateTime>(), "2024", nullptr},
		{PropertyTypeOf<EHTTPCorvFileDownloadResumeType>(), "e_resume", "\"E_RESUME\""},
		{PropertyTypeOf<EHTTPCorvFileDownloadResumeType>(), "2", "\"E_RESUME\""},
		{PropertyTypeOf<EHTTPCorvFileDownloadResumeType>(), "3", nullptr},
		{PropertyTypeOf<TArray<FString>>(), R"(["b", "a"])", R"(["b","a"])"},
		{PropertyTypeOf<TArray<FString>>(), "[1]", nullptr},
		{PropertyTypeOf<TArray<FString>>(), "word", nullptr},
		{PropertyTypeOf<TMap<FString, FString>>(), R"({"z": "1", "a": "2"})", R"({"z":"1","a":"2"})"},
		{PropertyTypeOf<TMap<FString, FString>>(), R"([["z", "1"], ["a", "2"]])", R"({"z":"1","a":"2"})"},
		{PropertyTypeOf<TMap<FString, FString>>(), R"([["z"]])", nullptr},
		{PropertyTypeOf<TMap<FString, FString>>(), "word", nullptr},
		{PropertyTypeOf<UCorvaneBPLibrary*>(), "word", nullptr},
		{PropertyTypeOf<TArray<FString>>(), deep, nullptr},
		{PropertyTypeOf<int32>(), deep, nullptr},
		{PropertyTypeOf<EHTTPCorvFileDownloadResumeType>(), "\xff", nullptr},
	};
} // namespace

TEST(Word, BecomesAValueOrIsRefused)
{
	Script::Value text(PropertyTypeOf<FString>());
	Program::fromWord(deep, PropertyTypeOf<FString>(), text.get());
	EXPECT_EQ(Program::toJson(PropertyTypeOf<FString>(), text.get()), deep) << "a text is no JSON";
	for (const Case& tested : cases)
	{
		Script::Value value(tested.type);
		if (!tested.json)
		{
			EXPECT_THROW(Program::fromWord(tested.word, tested.type, value.get()), Script::ScriptError) << tested.word;
			continue;
		}
		Program::fromWord(tested.word, tested.type, value.get());
		EXPECT_EQ(Program::toJson(tested.type, value.get()).dump(), tested.json);
	}
}

TEST(Word, BytesAreTakenAsTheyStand)
{
	Script::Value bytes(PropertyTypeOf<TArray<uint8>>());
	Program::fromWord("[1]\xff", bytes.type(), bytes.get());
	const Program::Json json = Program::toJson(bytes.type(), bytes.get());
	ASSERT_TRUE(json.is_binary());
	const std::vector<std::uint8_t>& held = json.get_binary();
	EXPECT_EQ(held, (std::vector<std::uint8_t>{'[', '1', ']', 0xff}));
}
