#include "DocText.h"

#include "Reflection.h"

#include <algorithm>
#include <array>

namespace Program
{
	namespace
	{
		constexpr std::string_view whiteSpace = " \t\n";

		std::string_view trimmedText(std::string_view text)
		{
			text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
			return text.substr(0, text.find_last_not_of(whiteSpace) + 1);
		}

		/** @return the place of the next tag, or the size of the text. */
		size_t findTag(std::string_view text)
		{
			constexpr std::array<std::string_view, 3> tags = {"@param ", "@return ", "@note "};
			size_t first = text.size();
			for (const std::string_view tag : tags)
			{
				first = std::min(first, text.find(tag));
			}
			return first;
		}

		std::string_view takeWord(std::string_view& text)
		{
			const std::string_view word = text.substr(0, text.find_first_of(whiteSpace));
			text = trimmedText(text.substr(word.size()));
			return word;
		}

		/** "name text" or "name, name text". */
		void addPins(DocText& doc, std::string_view body)
		{
			std::vector<std::string> names;
			for (bool goesOn = true; goesOn;)
			{
				const std::string_view word = takeWord(body);
				goesOn = word.ends_with(',');
				names.emplace_back(word.substr(0, word.size() - (goesOn ? 1 : 0)));
			}
			for (std::string& name : names)
			{
				doc.pins.emplace_back(std::move(name), body);
			}
		}

		void addToText(DocText& doc, std::string_view paragraph)
		{
			doc.text.append(doc.text.empty() || paragraph.empty() ? "" : "\n").append(paragraph);
		}

		/** @param section  a tag and what follows it; a sentence about threads at its end belongs to the whole. */
		void addSection(DocText& doc, std::string_view section)
		{
			const std::string_view tag = takeWord(section);
			const size_t thread = std::min(section.rfind("Thread: "), section.size());
			addToText(doc, section.substr(thread));
			section = trimmedText(section.substr(0, thread));
			if (tag == "@param")
			{
				addPins(doc, section);
			}
			else if (tag == "@return")
			{
				doc.pins.emplace_back("ReturnValue", section);
			}
			else
			{
				addToText(doc, section);
			}
		}

		DocText read(std::string_view text)
		{
			DocText doc;
			size_t end = findTag(text);
			doc.text = trimmedText(text.substr(0, end));
			while (end < text.size())
			{
				text.remove_prefix(end);
				end = 1 + findTag(text.substr(1));
				addSection(doc, trimmedText(text.substr(0, end)));
			}
			return doc;
		}
	} // namespace

	std::string_view DocText::pin(std::string_view name) const
	{
		const auto found =
			std::find_if(pins.begin(), pins.end(), [&](const auto& entry) { return Reflect::equalNames(entry.first, name); });
		return found == pins.end() ? std::string_view() : found->second;
	}

	DocText readTooltip(std::string_view text)
	{
		std::string clean(trimmedText(text.substr(0, text.find_last_not_of(" *") + 1)));
		if (const size_t slip = clean.find(":://"); slip != std::string::npos)
		{
			clean.erase(slip, 1);
		}
		return read(clean);
	}

	DocText readComment(std::string_view text)
	{
		std::string joined;
		for (size_t place = 0; place < text.size(); ++place)
		{
			const bool endsParagraph = text.substr(place).starts_with("\n\n");
			joined += text[place] == '\n' && !endsParagraph ? ' ' : text[place];
			place += endsParagraph ? 1 : 0;
		}
		return read(joined);
	}
} // namespace Program
