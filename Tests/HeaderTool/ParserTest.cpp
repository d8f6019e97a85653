#include "Parser.h"

#include <gtest/gtest.h>

using namespace HeaderTool;

namespace
{
	/** What may stand in the body of a class and must be passed over, whole and without complaint. */
	const std::string noises[] = {
		"void a(int b = f(1, 2)) const { if (b) { g(\"}\"); } } void c();",
		"void a() { b(\"{\", '{'); /* { */ }\n// {\n",
		"UThing() : a(1), b{2}, c({3}) { d(); } explicit UThing(int x) noexcept; ~UThing() override = default;",
		"bool operator()(int a) const { return a; } UThing& operator=(const UThing&) = delete; explicit operator bool() const;"
		"bool operator==(int) const; int operator[](int i) { return i; } void* operator new(size_t);",
		"template <class T, int N = (1 > 0)> struct TBox { T a[N]; void f() {} }; TMap<FString, TArray<int32>> m;"
		"template <class A> requires(sizeof(A) > 1) void g(A a) { a(); } template <> void g<int>(int);",
		"int a = 1, b{2}, c[] = {3, 4}; TFunction<void()> d = [this] { e({}); }; auto f = [] { return 1; }();",
		"class FInner : public TBase<int, 2> { public: struct FDeep { int a; } deep; }; enum class E { A, B = 2 }; union { int u; float v; };"
		"enum FForward : int;",
		"friend class FOther; friend bool f(int) { return true; } using A = int; typedef struct { int a; } B; static_assert(true, \"}\");"
		"class FForward* pointer; struct alignas(16) FAligned { int a; };",
		"protected: int a; private: int b : 3; public:",
		"[[nodiscard]] int a() { return 1; } int b [[maybe_unused]] = 0;",
		"SOME_MACRO(a, {b})\n",
		"\n#if defined(X) && \\\n Y\nvoid a() {\n#else\nvoid a(int) {\n#endif\n#define UNBALANCED }\n#undef UNBALANCED\n",
		"\n#if WITH_EDITOR\nUFUNCTION() void editorOnly();\n#endif // WITH_EDITOR\n",
		"auto a(int b) -> decltype(b) { return b; } int (*c)(int) = nullptr;",
		";;",
	};

	const std::string probe = "\n/** not a tooltip, UFUNCTION() */ UFUNCTION(/* none */ meta = (ToolTip = \"a\" /* , */\n"
							  "\"{b\\n\", Key))\n"
							  "static void probe(const TMap<FString, TArray<int32>>& a = {}, int32 b = 1) { body({}); }\n";
} // namespace

TEST(Parser, SkipsWhatStandsBetweenReflectedFunctions)
{
	for (const std::string& noise : noises)
	{
		SCOPED_TRACE(noise);
		const std::string members = probe + noise + probe + noise;
		const HeaderDef header =
			readHeader("#pragma once\n#include \"X.generated.h\"\nnamespace N { class FX {}; }\nextern \"C\" { int f(); }\nclass UOther;\n"
					   "UCLASS()\nclass UThing : public UObject {\n GENERATED_BODY()\npublic:" +
						   members + "};\nUENUM()\nenum class EAfter : uint8 { A };\n",
				"X.h", false);
		ASSERT_EQ(header.classes.size(), 1u);
		EXPECT_EQ(header.enums.size(), 1u) << "what follows the class is still read";
		const ClassDef& def = header.classes.front();
		EXPECT_EQ(def.bodyLine, 8);
		EXPECT_EQ(def.declaresConstructor, noise.starts_with("UThing()"));
		EXPECT_EQ(def.declaresDestructor, noise.starts_with("UThing()"));
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
