#include "Parser.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace HeaderTool;

namespace
{
	/** Something that stands in the body of a class and must be passed over, whole and without complaint. */
	struct Case
	{
		const char* name;
		std::string_view noise;
	};

	const Case cases[] = {
		{"Methods", "void a(int b = f(1, 2)) const { if (b) { g(\"}\"); } } void c();"},
		{"BracesInQuotes", "void a() { b(\"{\", '{', R\"({)\"); /* { */ }\n// {\n"},
		{"Constructors", "UThing() : a(1), b{2}, c({3}) { d(); } explicit UThing(int x) noexcept; ~UThing() override = default;"},
		{"Operators",
			"bool operator()(int a) const { return a; } UThing& operator=(const UThing&) = delete; explicit operator bool() const;"
			"bool operator==(int) const; int operator[](int i) { return i; } void* operator new(size_t);"},
		{"Templates", "template <class T, int N = (1 > 0)> struct TBox { T a[N]; void f() {} }; TMap<FString, TArray<int32>> m;"
					  "template <class A> requires(sizeof(A) > 1) void g(A a) { a(); } template <> void g<int>(int);"},
		{"Initialisers", "int a = 1, b{2}, c[] = {3, 4}; TFunction<void()> d = [this] { e({}); }; auto f = [] { return 1; }();"},
		{"NestedTypes",
			"class FInner : public TBase<int, 2> { public: struct FDeep { int a; } deep; }; enum class E { A, B = 2 }; union { int u; float v; };"
			"enum FForward : int;"},
		{"Declarations",
			"friend class FOther; friend bool f(int) { return true; } using A = int; typedef struct { int a; } B; static_assert(true, \"}\");"
			"class FForward* pointer; struct alignas(16) FAligned { int a; };"},
		{"AccessLabels", "protected: int a; private: int b : 3; public:"},
		{"Attributes", "[[nodiscard]] int a() { return 1; } int b [[maybe_unused]] = 0;"},
		{"MacrosWithoutSemicolon", "SOME_MACRO(a, {b})\n"},
		{"Conditions", "\n#if defined(X) && \\\n Y\nvoid a() {\n#else\nvoid a(int) {\n#endif\n#define UNBALANCED }\n#undef UNBALANCED\n"},
		{"EditorOnly", "\n#if WITH_EDITOR\nUFUNCTION() void editorOnly();\n#endif // WITH_EDITOR\n"},
		{"TrailingReturn", "auto a(int b) -> decltype(b) { return b; } int (*c)(int) = nullptr;"},
		{"Semicolons", ";;"},
	};

	constexpr std::string_view probe = "\n/** not a tooltip, UFUNCTION() */ UFUNCTION(/* none */ meta = (ToolTip = \"a\" /* , */\n"
									   "\"{b\\n\", Key))\n"
									   "static void probe(const TMap<FString, TArray<int32>>& a = {}, int32 b = 1) { body({}); }\n";

	HeaderDef readClass(const std::string& members, Diagnostics& diagnostics)
	{
		return readHeader(
			"#pragma once\n#include \"X.generated.h\"\nnamespace N { class FX {}; }\nextern \"C\" { int f(); }\nclass UOther;\n"
			"UCLASS()\nclass UThing : public UObject {\n GENERATED_BODY()\npublic:" +
				members + "};\nUENUM()\nenum class EAfter : uint8 { A };\n",
			"X.h", false, diagnostics);
	}
} // namespace

TEST(Parser, SkipsWhatStandsBetweenReflectedFunctions)
{
	for (const Case& c : cases)
	{
		SCOPED_TRACE(c.name);
		Diagnostics diagnostics;
		const std::string noise(c.noise);
		const HeaderDef header = readClass(std::string(probe) + noise + std::string(probe) + noise, diagnostics);
		for (const Diagnostic& diagnostic : diagnostics)
		{
			ADD_FAILURE() << diagnostic.line << ": " << diagnostic.message;
		}
		ASSERT_EQ(header.classes.size(), 1u);
		EXPECT_EQ(header.enums.size(), 1u) << "what follows the class is still read";
		const ClassDef& def = header.classes.front();
		EXPECT_EQ(def.bodyLine, 8);
		ASSERT_EQ(def.functions.size(), 2u);
		for (const FunctionDef& function : def.functions)
		{
			EXPECT_EQ(function.specifiers.findMeta("tooltip")->value, "a{b\n");
			ASSERT_EQ(function.parameters.size(), 2u);
			EXPECT_EQ(spell(function.parameters[0].type), "const TMap<FString, TArray<int32>>&");
			EXPECT_EQ(function.parameters[1].defaultValue->value, "1");
		}
		const auto lines = std::count(noise.begin(), noise.end(), '\n');
		EXPECT_EQ(def.functions[0].line, 12);
		EXPECT_EQ(def.functions[1].line, 12 + 4 + lines);
	}
}

TEST(Parser, AMistakeDoesNotHideTheNextDeclaration)
{
	Diagnostics diagnostics;
	const HeaderDef header = readClass("UFUNCTION(((\n) void a();\nUFUNCTION() void b(int32);\nUFUNCTION() void c();\n", diagnostics);
	EXPECT_EQ(diagnostics.size(), 2u);
	EXPECT_FALSE(header.isComplete);
	EXPECT_EQ(header.enums.size(), 0u) << "nothing behind an open bracket can be trusted";

	Diagnostics second;
	const HeaderDef other = readClass("UFUNCTION(1) void a();\nUFUNCTION() void b(int32);\nUFUNCTION() void c();\n", second);
	EXPECT_EQ(second.size(), 2u);
	ASSERT_EQ(other.classes.size(), 1u);
	ASSERT_EQ(other.classes[0].functions.size(), 1u);
	EXPECT_EQ(other.classes[0].functions[0].name, "c");
}
