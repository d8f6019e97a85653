#include "ToolRun.h"

#include <gtest/gtest.h>

namespace
{
	/** A text with a mistake, and the message without "Case.h(" and "): Error". */
	struct Case
	{
		std::string text;
		std::string expected;
	};

	std::string repeated(int times, const std::string& text)
	{
		std::string all;
		while (times-- > 0)
		{
			all += text;
		}
		return all;
	}

	const std::string head = "#pragma once\n#include \"Other.h\"\n#include \"Case.generated.h\"\n";
	const std::string classHead = "UCLASS()\nclass UCase : public UParent\n{\n\tGENERATED_BODY()\n";
	const std::string plainEnum = "UENUM()\nenum class ECase : uint8 { A };\n";
	const std::string delegates = "DECLARE_DYNAMIC_MULTICAST_DELEGATE";
	const std::string divided = ": a preprocessor line stands inside this reflected declaration";
	const std::string overloaded = "; case does not tell names apart and there are no overloads";
	const std::string unassignable = "'a': BlueprintAssignable is for members of classes that are dynamic multicast delegates";
	const std::string misplaced =
		" is not read here: reflected types belong to the file itself, properties to their bodies, functions to those of classes";

	/** What every case may build on. */
	const std::string other =
		"#pragma once\n#include \"Other.generated.h\"\n"
		"USTRUCT(BlueprintType)\nstruct FOther { GENERATED_BODY() };\nUSTRUCT()\nstruct FHidden { GENERATED_BODY() };\n"
		"UENUM()\nenum class EOther : uint8 { A };\n" +
		delegates +
		"(FOtherEvent);\nUCLASS()\nclass UParent : public UObject { GENERATED_BODY()\npublic:\n"
		"UFUNCTION() void taken();\nUPROPERTY() int32 value; };\n";

	const Case headers[] = {
		{"#include \"A.h\"\n#pragma once\n#include \"Case.generated.h\"\n" + plainEnum, "1: the header must begin with #pragma once"},
		{"#pragma once\n" + plainEnum, "1: reflected types need #include \"Case.generated.h\""},
		{"#pragma once\n#include \"Cases.generated.h\"\n", "2: expected #include \"Case.generated.h\", found \"Cases.generated.h\""},
		{head + "#include <b>\n", "4: \"Case.generated.h\" must be the last include"},
	};

	/** They stand on line 4. */
	const Case files[] = {
		{"// f\xFCr\n", "4: a byte on this line is no UTF-8"},
		{"/* a\n", "4: this comment does not end"},
		{"const char* a = \"b;\n", "4: this quoted text does not end on its line"},
		{"const char* a = u8R\"(b)\";\n", "4: raw strings are not read here"},
		{repeated(200'000, "namespace A {\n") + plainEnum + repeated(200'000, "}"), "200004: UENUM" + misplaced},
		{"UENUM()\nenum class ECase : uint8 { A,\n#if A\nB\n#endif\n};", "9" + divided},
		{"UCLASS()\n#define A\nclass UCase : public UObject { GENERATED_BODY() };", "6" + divided},
		{"}\nint a;", "4: '}' without '{'"},
		{"void a() {\n(];\n}", "5: expected ')' to close a bracket, found ']'"},
		{"void a() {", "4: this bracket is not closed"},
		{"UFUNCTION() void a();", "4: UFUNCTION" + misplaced},
		{"class FPlain {\nUPROPERTY() int32 a; };", "5: UPROPERTY" + misplaced},
		{"UINTERFACE()\nclass UCase : public UInterface {};", "4: UINTERFACE" + misplaced},
		{"USTRUCT() struct FCase { GENERATED_BODY()\nUFUNCTION() void a(); };", "5: UFUNCTION" + misplaced},

		{"UCLASS() class UCase;", "4: expected '{' at the beginning of UCase, found ';'"},
		{"USTRUCT() class FCase {};", "4: expected 'struct' after its macro, found 'class'"},
		{"USTRUCT() struct FCase {\nint a; GENERATED_BODY() };", "5: expected 'GENERATED_BODY' at the beginning of FCase, found 'int'"},
		{"UCLASS() class UCase : UObject { GENERATED_BODY() };", "4: expected 'public' before a base of UCase, found 'UObject'"},
		{"USTRUCT() struct FCase { GENERATED_BODY()\nint a;\n", "6: expected '}' at the end of FCase, found the end of the file"},
		{"UCLASS() class UCase : public FOther { GENERATED_BODY() };", "4: 'UCase' must derive from a reflected class, 'FOther' is none"},
		{"UCLASS() class UCase : public UObject, public FPlain, public UParent { GENERATED_BODY() };",
			"4: 'UCase' may have one reflected base only, 'UParent' is a second one"},
		{"USTRUCT() struct FCase : public FPlain { GENERATED_BODY() };", "4: the base 'FPlain' of 'FCase' is not a reflected struct"},
		{"UCLASS() class Case : public UObject { GENERATED_BODY() };", "4: the name 'Case' must begin with U"},
		{"USTRUCT() struct FCase { GENERATED_BODY()\nUPROPERTY(BlueprintReadOnly, BlueprintReadWrite) int32 a; };",
			"5: 'a' cannot be both BlueprintReadOnly and BlueprintReadWrite"},
		{"USTRUCT() struct FCase { GENERATED_BODY()\nUPROPERTY(BlueprintReadOnly) FGuid a; };",
			"5: property 'a' of 'FCase': the type 'FGuid' is not available in this host"},
		{"USTRUCT() struct Record { GENERATED_BODY() };", "4: the name 'Record' must begin with F"},
		{"USTRUCT() struct Fworld { GENERATED_BODY() };", "4: 'Fworld': the engine has a type of its own called 'world'"},
		{"UENUM() enum class EAxis : uint8 { A };", "4: 'EAxis': the engine has a type of its own called 'EAxis'"},
		{delegates + "(FGuid);", "4: 'FGuid': the engine has a type of its own called 'Guid'"},
		{"UCLASS() class UOTHER : public UObject { GENERATED_BODY() };", "4: 'UOTHER' takes a name that Other.h(4) has taken"},
		{delegates + "(FCase);\nUSTRUCT() struct FCASE { GENERATED_BODY() };\n" + delegates + "(FcasE);",
			"6: 'FcasE' takes a name that Case.h(4) has taken"},

		{"UENUM() enum class EA : int32 { A };", "4: 'EA' must be an 'enum class' based on uint8"},
		{"UENUM() enum EB : uint8 { A };", "4: 'EB' must be an 'enum class' based on uint8"},
		{"UENUM() enum class EA : uint8 { A, B,\na };", "5: 'a' has the name or the value of 'A'"},
		{"UENUM() enum class EA : uint8 { A = 3, B = 2,\nC };", "5: 'C' has the name or the value of 'A'"},
		{"UENUM() enum class EA : uint8 { A = 010 };", "4: the value of A must be a plain number, found '010'"},
		{"UENUM() enum class EA : uint8 { A UMETA(X = 1, x = 2) };", "4: 'x' stands twice in UMETA"},

		{"UCLASS(Blueprintabel) class UCase : public UObject { GENERATED_BODY() };", "4: unknown specifier 'Blueprintabel' in UCLASS"},
		{"USTRUCT(Blueprintable) struct FCase { GENERATED_BODY() };", "4: unknown specifier 'Blueprintable' in USTRUCT"},
		{"UENUM(Flags) enum class EA : uint8 { A };", "4: unknown specifier 'Flags' in UENUM"},
		{"USTRUCT() struct FCase { GENERATED_BODY()\nUPROPERTY(BlueprintAssignable) FOtherEvent a; };", "5: " + unassignable},
		{"USTRUCT() struct FCase { GENERATED_BODY()\nUPROPERTY() int32 a;\nUPROPERTY() int32 A; };",
			"5: FCase has another member 'a'" + overloaded},
		{delegates + "_OneParam(FCase, int32 a);", "4: expected ',' between the type 'int32' and the parameter's name, found 'a'"},
		{"DECLARE_DYNAMIC_DELEGATE(FCase);", "4: DECLARE_DYNAMIC_DELEGATE is not available in this host; multicast delegates are"},
		{delegates + "_OneParam(FCase, FString&, a);", "4: parameter 'a' of 'FCase': delegates take no non-const references"},
		{delegates + "_TwoParams(FCase, FString, a, int32, A);", "4: 'FCase' has two parameters called 'A'"},
	};

	/** They stand on line 8, in a class that derives from UParent. */
	const Case members[] = {
		{"\n#ifdef A\nUFUNCTION() void a();\n#endif",
			"10: UFUNCTION stands inside '#ifdef A' of line 9; only WITH_EDITOR and WITH_EDITORONLY_DATA may enclose it"},
		{"#if WITH_EDITOR\nUFUNCTION() void a();\n#else\nUPROPERTY() int32 b;\n#endif",
			"11: UPROPERTY stands inside '#else' of line 10; only WITH_EDITOR and WITH_EDITORONLY_DATA may enclose it"},
		{"UFUNCTION() void a(int32 b\n#if A\n, int32 c\n#endif\n);", "12" + divided},
		{"GENERATED_BODY()", "8: GENERATED_BODY" + misplaced},
		{"void a() { UPROPERTY() int b; }", "8: UPROPERTY" + misplaced},
		{"UFUNCTION() a();", "8: expected the name of a function, found '('"},
		{"UFUNCTION() void a(" + repeated(200'000, "TArray<") + "int32" + repeated(200'000, ">") + " b);",
			"8: template arguments may not stand more than 64 deep in one another"},
		{"UPROPERTY() int32 a, b;", "8: expected ';' after the declaration of a, found ','"},
		{"UFUNCTION(meta = \"a\") void a();", "8: expected '(' before the specifiers, found '\"a\"'"},
		{"UFUNCTION(meta = (A = (B, C))) void a();", "8: expected the value of 'A', found '('"},
		{"UFUNCTION(meta = (A = TEXT(\"a\"))) void a();", "8: expected ')' or ',' after a specifier, found '('"},
		{"UFUNCTION(meta = (A,)) void a();", "8: expected the name of a specifier, found ')'"},
		{"UFUNCTION(meta = (\nToolTip = \"\\xC3\")) void a();", "9: the escape '\\x' is not read here; write the character itself"},
		{"UFUNCTION(Exec) void a();", "8: unknown specifier 'Exec' in UFUNCTION"},
		{"UFUNCTION(Category) void a();", "8: the specifier 'Category' of UFUNCTION takes a value"},
		{"UFUNCTION() void a(UPARAM(Ref = 1) int32& b);", "8: the specifier 'ref' of UPARAM takes no value"},
		{"UFUNCTION() UPARAM(out) int32 a();", "8: unknown specifier 'out' in UPARAM"},
		{"UPROPERTY(EditDefaultsOnly) int32 a;", "8: unknown specifier 'EditDefaultsOnly' in UPROPERTY"},
		{"UPROPERTY(BlueprintReadWrite) int32 a;", "8: 'a': in this host scripts see the fields of structs only"},
		{"UFUNCTION(DisplayName = \"a\", meta = (\nDISPLAYNAME = \"b\")) void a();", "9: 'DISPLAYNAME' stands twice in UFUNCTION"},
		{"UFUNCTION(BlueprintCallable) void a();", "8: 'a' is for scripts and needs a Category"},
		{"UFUNCTION(BlueprintPure, Category = \"\") int32 a();", "8: 'a' is for scripts and needs a Category"},
		{"UFUNCTION(BlueprintPure, Category = A) void a(int32 b);", "8: 'a' is BlueprintPure but gives no result"},
		{"UFUNCTION() void a(UPARAM(ref) const int32& b);",
			"8: parameter 'b' of 'a': UPARAM(ref) needs a non-const reference, not 'const int32&'"},
		{"UPROPERTY() int32 TAKEN;", "8: UParent has another member 'TAKEN'" + overloaded},
		{"UFUNCTION() void a();\nUFUNCTION() void a(int32 b);", "8: UCase has another member 'a'" + overloaded},
		{"UFUNCTION() void a(int32 Value);", "8: parameter 'Value' of 'a' has the name of a reflected property of UParent"},
		{"UFUNCTION() int32 a(int32 returnValue);", "8: 'returnValue' of 'a' is the name of the return value"},
		{"UFUNCTION() FString& a();", "8: return value of 'a': 'FString&' is a reference that cannot be kept"},
		{"UFUNCTION() FGuid a();", "8: return value of 'a': the type 'FGuid' is not available in this host"},
		{"UPROPERTY() TObjectPtr<UCase> a; UPROPERTY() double b = 1.0; UPROPERTY() uint8 c : 1; UPROPERTY() FOtherEvent d;\n"
		 "UPROPERTY() FHidden e; UPROPERTY() TSharedPtr<int32> f;",
			"9: property 'f' of 'UCase': scripts cannot hold the type 'TSharedPtr'"},
		{"UPROPERTY() int32& a;", "8: property 'a' of 'UCase': 'int32&' is a reference that cannot be kept"},
		{"UPROPERTY(BlueprintAssignable) int32 a;", "8: " + unassignable},
	};

	/** Types that may not be the type of a parameter, and what is said about them. */
	const Case types[] = {{"uint32", "scripts cannot hold the type 'uint32'"}, {"int", "scripts cannot hold the type 'int', write int32"},
		{"std::string", "scripts cannot hold the type 'std::string', write FString"},
		{"const char*", "scripts cannot hold the type 'const char*'"}, {"TSharedPtr<FOther>", "scripts cannot hold the type 'TSharedPtr'"},
		{"const FText&", "the type 'FText' is not available in this host"},
		{"TArray<FVector>", "the type 'FVector' is not available in this host"},
		{"TMap<FString, TArray<int32>>", "'TMap<FString, TArray<int32>>' nests containers, which scripts cannot hold"},
		{"TMap<FString>", "'TMap<FString>' is no container that scripts can hold"},
		{"TArray<int32>*", "'TArray<int32>*' is no container that scripts can hold"}, {"UCase**", "scripts cannot hold the type 'UCase**'"},
		{"UCase", "objects are held by pointer: write 'UCase*'"},
		{"TObjectPtr<UCase>", "scripts cannot hold the type 'TObjectPtr', write the plain pointer"},
		{"FString&&", "'FString&&' is a reference that cannot be kept"}, {"FMissing", "scripts cannot hold the type 'FMissing'"},
		{"FOtherEvent", "scripts cannot hold the type 'FOtherEvent'"},
		{"FHidden", "'FHidden' is not for scripts: its USTRUCT lacks BlueprintType"}};

	/** Defaults that a parameter of a type may not have. */
	const Case defaults[] = {{"int32", "1+1"}, {"int32", "0x10"}, {"int32", "010"}, {"int32", "1'000"}, {"int64", "10L"}, {"int32", "1.0f"},
		{"uint8", "'a'"}, {"bool", "1"}, {"bool", "!true"}, {"float", "1e3f"}, {"float", "1"}, {"FString", "FString()"},
		{"FString", "TEXT(\"a\")\"b\""}, {"FString", "nullptr"}, {"FString&", "\"\""}, {"UCase*", "0"}, {"TArray<int32>", "{}"},
		{"EOther", "A"}, {"EOther", "ECase::A"}};

	void expectMessage(const std::string& text, const std::string& expected)
	{
		SCOPED_TRACE(text.substr(0, 500));
		ToolRun tool;
		tool.addHeader("Other.h", other);
		tool.options.references.swap(tool.options.headers);
		tool.addHeader("Case.h", text);
		const size_t colon = expected.find(": ");
		EXPECT_EQ(tool.run(), std::vector{fmt::format("Case.h({}): Error{}", expected.substr(0, colon), expected.substr(colon))});
	}

	std::string inClass(const std::string& member)
	{
		return head + classHead + member + "\n};\n";
	}
} // namespace

TEST(Errors, AreExactlyTheseMessages)
{
	for (const Case& c : headers)
	{
		expectMessage(c.text, c.expected);
	}
	for (const Case& c : files)
	{
		expectMessage(head + c.text, c.expected);
	}
	for (const Case& c : members)
	{
		expectMessage(inClass(c.text), c.expected);
	}
	for (const Case& c : types)
	{
		expectMessage(inClass(fmt::format("UFUNCTION() void a({} b);", c.text)), "8: parameter 'b' of 'a': " + c.expected);
	}
	for (const Case& c : defaults)
	{
		expectMessage(inClass(fmt::format("UFUNCTION() void a({} b = {}, bool c = true);", c.text, c.expected)),
			fmt::format("8: parameter 'b' of 'a': the default '{}' cannot be given to '{}'", c.expected, c.text));
	}
}

TEST(Errors, AreOneForEachHeader)
{
	ToolRun tool;
	tool.addHeader("One.h", "#pragma once\n#include \"Two.h\"\n");
	tool.addHeader("Two.h", "#pragma once\n#include \"Three.h\"\n");
	tool.addHeader("Three.h", "#pragma once\n#include \"One.h\"\n");
	tool.addHeader("Deep/one.h", "#pragma once\n");
	tool.options.references = {
		tool.folder.write("Reference.h", "#pragma once\n#include \"Reference.generated.h\"\nUENUM(A)\n" + plainEnum)};
	EXPECT_EQ(tool.run(), std::vector<std::string>{"Reference.h(4): Error: expected 'enum' after UENUM, found 'UENUM'"});

	tool.folder.write("Reference.h", "#pragma once\n#include \"Reference.generated.h\"\nUENUM(Foo)\nenum class E : int32 { A, A };\n");
	const std::vector<std::string> expected = {"Reference.h(3): Error: unknown specifier 'Foo' in UENUM",
		"One.h(2): Error: \"Two.h\" includes this header in turn", "Two.h(2): Error: \"Three.h\" includes this header in turn",
		"Three.h(2): Error: \"One.h\" includes this header in turn", "Deep/one.h(1): Error: 'one.h' takes a name that One.h(1) has taken"};
	EXPECT_EQ(tool.run(), expected);
}
