#include "HeaderList.h"

#include "Text.h"

#include <new>

void FHeaderList::Add(const std::string& Name, std::string_view Value)
{
	// "Name:" would tell libcurl to leave the header out.
	AddLine(Text::Trim(Value).empty() ? (Name + ";").c_str() : (Name + ": ").append(Value).c_str());
}

void FHeaderList::Remove(const char* Name)
{
	AddLine((std::string(Name) + ":").c_str());
}

std::string_view FHeaderList::NameOf(std::string_view Line)
{
	return Line.substr(0, Line.find_first_of(":;"));
}

void FHeaderList::AddLine(const char* Line)
{
	curl_slist* Grown = curl_slist_append(Lines.get(), Line);
	if (!Grown)
	{
		throw std::bad_alloc();
	}
	Lines.release(); // still the head of the grown list, unless the list was empty
	Lines.reset(Grown);
}
