#include "Lab/Plans/Content.h"

#include "Lab/Plans/Descriptor.h"

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <random>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>

namespace Lab
{
	namespace
	{
		std::string_view cut(std::string_view bytes, std::uint64_t place, std::size_t most)
		{
			return bytes.substr(static_cast<std::size_t>(place), most);
		}

		class Bytes : public Content
		{
		public:
			explicit Bytes(std::string inBytes)
				: bytes(std::move(inBytes))
			{
			}
			std::uint64_t size() const override { return bytes.size(); }
			std::string_view at(std::uint64_t place, std::size_t most) const override { return cut(bytes, place, most); }
			std::uint64_t fingerprint() const override { return std::hash<std::string>()(bytes); }

		private:
			const std::string bytes;
		};

		class File : public Content
		{
		public:
			explicit File(const std::string& path)
			{
				const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC), path);
				struct stat facts = {};
				check(::fstat(file.get(), &facts), path);
				length = static_cast<std::size_t>(facts.st_size);
				mark =
					static_cast<std::uint64_t>(facts.st_mtim.tv_sec) * 1'000'000'000U + static_cast<std::uint64_t>(facts.st_mtim.tv_nsec);
				if (length > 0)
				{
					start = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, file.get(), 0);
					check(start == MAP_FAILED ? -1 : 0, path);
				}
			}
			~File() override
			{
				if (start)
				{
					::munmap(start, length);
				}
			}
			File(const File&) = delete;
			File& operator=(const File&) = delete;

			std::uint64_t size() const override { return length; }
			std::string_view at(std::uint64_t place, std::size_t most) const override
			{
				return cut({static_cast<const char*>(start), length}, place, most);
			}
			std::uint64_t fingerprint() const override { return mark ^ length; }

		private:
			std::size_t length = 0;
			std::uint64_t mark = 0;
			void* start = nullptr;
		};

		class Repeated : public Content
		{
		public:
			Repeated(std::string inText, std::uint64_t inSize)
				: text(std::move(inText))
				, length(text.empty() ? 0 : inSize)
			{
			}
			std::uint64_t size() const override { return length; }
			std::string_view at(std::uint64_t place, std::size_t most) const override
			{
				return cut(text, place % text.size(), static_cast<std::size_t>(std::min<std::uint64_t>(most, length - place)));
			}
			std::uint64_t fingerprint() const override { return std::hash<std::string>()(text) ^ length; }

		private:
			const std::string text;
			const std::uint64_t length;
		};

		class Part : public Content
		{
		public:
			Part(ContentPtr inWhole, std::uint64_t inFirst, std::uint64_t inSize)
				: whole(std::move(inWhole))
				, first(inFirst)
				, length(inSize)
			{
			}
			std::uint64_t size() const override { return length; }
			std::string_view at(std::uint64_t place, std::size_t most) const override
			{
				return whole->at(first + place, static_cast<std::size_t>(std::min<std::uint64_t>(most, length - place)));
			}
			std::uint64_t fingerprint() const override { return whole->fingerprint(); }

		private:
			const ContentPtr whole;
			const std::uint64_t first;
			const std::uint64_t length;
		};

		class Changing : public Content
		{
		public:
			Changing(ContentPtr inBefore, std::uint64_t inPlace, ContentPtr inAfter)
				: before(std::move(inBefore))
				, border(std::min(inPlace, before->size()))
				, after(std::move(inAfter))
			{
			}
			std::uint64_t size() const override { return before->size(); } // it has been announced
			std::string_view at(std::uint64_t place, std::size_t most) const override
			{
				return place < border ? before->at(place, static_cast<std::size_t>(std::min<std::uint64_t>(most, border - place)))
									  : after->at(place % after->size(), most);
			}
			std::uint64_t fingerprint() const override { return before->fingerprint(); }

		private:
			const ContentPtr before;
			const std::uint64_t border;
			const ContentPtr after;
		};
	} // namespace

	ContentPtr bytesContent(std::string bytes)
	{
		return std::make_shared<Bytes>(std::move(bytes));
	}

	ContentPtr fileContent(const std::string& path)
	{
		return std::make_shared<File>(path);
	}

	ContentPtr madeContent(std::uint64_t size, unsigned seed)
	{
		// A prime, so that pieces of round sizes in the wrong order show.
		constexpr std::size_t period = 1'048'573;
		std::mt19937 random(seed);
		std::string block(static_cast<std::size_t>(std::min<std::uint64_t>(size, period)), '\0');
		std::generate(block.begin(), block.end(), [&random] { return static_cast<char>(random()); });
		return repeatedContent(std::move(block), size);
	}

	ContentPtr repeatedContent(std::string text, std::uint64_t size)
	{
		constexpr std::size_t enough = 64 << 10; // a view of a few bytes would cost a system call
		const std::string once = text;
		while (!once.empty() && text.size() < enough && text.size() < size)
		{
			text += once;
		}
		return std::make_shared<Repeated>(std::move(text), size);
	}

	ContentPtr partOf(ContentPtr whole, std::uint64_t first, std::uint64_t size)
	{
		return std::make_shared<Part>(std::move(whole), first, size);
	}

	ContentPtr changingAt(ContentPtr before, std::uint64_t place, ContentPtr after)
	{
		return std::make_shared<Changing>(std::move(before), place, after->size() ? std::move(after) : bytesContent("?"));
	}

	std::string wholeOf(const Content& content)
	{
		if (content.size() == endless)
		{
			throw std::length_error("content without end cannot be taken as a whole");
		}
		std::string bytes;
		bytes.reserve(static_cast<std::size_t>(content.size()));
		while (bytes.size() < content.size())
		{
			bytes += content.at(bytes.size(), static_cast<std::size_t>(content.size()) - bytes.size());
		}
		return bytes;
	}
} // namespace Lab
