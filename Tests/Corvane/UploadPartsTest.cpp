#include "UploadFixture.h"

#include <httplib.h>
#include <random>

namespace
{
	/** A library's server that takes forms apart and saves each file of them, named by its field. */
	class SavingServer
	{
	public:
		SavingServer()
		{
			const auto save = [this](const httplib::Request& request, httplib::Response& response)
			{
				for (const auto& [name, part] : request.files)
				{
					Saved.write(name, part.content);
					const std::scoped_lock lock(Mutex);
					Names[name] = part.filename + " " + part.content_type;
				}
				response.set_content("saved " + std::to_string(request.files.size()), "text/plain");
			};
			Http.new_task_queue = [] { return new httplib::ThreadPool(1); };
			Http.set_keep_alive_max_count(1); // its end would wait for connections that are kept
			Http.Post("/", save);
			Http.Put("/", save);
			Port = Http.bind_to_any_port("127.0.0.1");
			Thread = std::thread([this] { Http.listen_after_bind(); });
			waitFor([this] { return Http.is_running(); });
		}
		~SavingServer()
		{
			Http.stop();
			Thread.join();
		}

		std::string url() const { return "http://127.0.0.1:" + std::to_string(Port) + "/"; }
		std::string name(const std::string& field) const
		{
			const std::scoped_lock lock(Mutex);
			return Names.at(field);
		}

		const TempDir Saved;

	private:
		mutable std::mutex Mutex;
		std::map<std::string, std::string> Names; // field to file name and type
		httplib::Server Http;
		int Port = 0;
		std::thread Thread;
	};

	class UploadParts : public UploadTest
	{
	protected:
		/** Random bytes, with delimiters in between that are none of this upload's. */
		static std::string content(size_t size)
		{
			std::mt19937 random(static_cast<unsigned>(size));
			std::string bytes(size, '\0');
			for (char& byte : bytes)
			{
				byte = static_cast<char>(random());
			}
			return bytes + "\r\n------UE4CorvanePlugin_--\r\n";
		}

		SavingServer server;
	};
} // namespace

TEST_F(UploadParts, ArriveAsTheyAreOnDisk)
{
	const std::string fields[] = {"small", "middle", "large"};
	TArray<FString> paths;
	TArray<FString> ids;
	for (size_t number = 0; number < 3; ++number)
	{
		paths.Add(text(dir.write(fields[number] + " ü;.tar.PNG", content(size_t(1) << (number * 10)))));
		ids.Add(text(fields[number]));
	}
	for (const bool bPost : {true, false})
	{
		TArray<FhttpRequest> requests;
		FString id;
		const auto absolute = EHTTPCorvFileUpload::E_ad;
		bPost ? UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPOST(
					{}, text(server.url()), {}, absolute, paths, ids, {{"text", "value"}}, "", requests, id)
			  : UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPUT({}, text(server.url()), {}, absolute, paths, ids, "", requests, id);
		EXPECT_EQ(run(requests).dataString, bPost ? "saved 4" : "saved 3");
		for (const std::string& field : fields)
		{
			EXPECT_TRUE(server.Saved.read(field) == dir.read(field + " ü;.tar.PNG")) << field;
			EXPECT_EQ(server.name(field), field + " ü;.tar.PNG image/png");
		}
	}
	EXPECT_EQ(server.Saved.read("text"), "value");
}

TEST_F(UploadParts, OfStreamsArriveAsTheyAreOnDisk)
{
	for (const Type type : {Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		for (const size_t size : {1u, 1023u, 65536u, 1000000u})
		{
			const std::string path = dir.write("a.bin", content(size));
			EXPECT_EQ(run(put(server.url(), path, type, {"field"})).dataString, "saved 1");
			EXPECT_TRUE(server.Saved.read("field") == content(size)) << size;
			EXPECT_TRUE(dir.read("a.bin") == content(size)) << size;
			EXPECT_EQ(server.name("field"), "a.bin ") << "its type stands there without a name";
		}
	}
}
