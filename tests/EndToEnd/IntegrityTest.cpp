#include "EndToEnd/Fixture.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <future>

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

// The console receives what a file held at one instant, the tool reports
// what the console answered, and no request goes to a host nobody named.

namespace {

using namespace std::string_literals;
using mockconsole::Answer;
using mockconsole::Route;
constexpr std::uint64_t MiB = 1024 * 1024;

std::string uploaded(const std::string &type) {
  return "\n\n\n✅ " + type + " file successfully uploaded. \n\n";
}
const std::string published =
    uploaded("installer") + uploaded("metadata") +
    "\n💡Application has been uploaded to the console successfully. \n\n "
    "Please check: https://\x1b[3;31myour_uem_hostname.example\x1b[0;0m"
    "\x1b[0;0m\x1b[0;0m/Quellmark/#/Quellmark/Apps/Details/Internal/4711"
    "/Summary \n\n The Application ID : 4711 \n";
const std::string changed = "\n\n\n❗️Error: The request body could not be "
                            "sent (the file '{dir}/App.pkg' changed while it "
                            "was being sent)\n";

const std::string installerPost =
    "POST /api/mam/blobs/uploadblob?filename=App.pkg&organizationgroupid=570"
    "&moduleType=Application";
const std::vector<std::string> all = {
    installerPost,
    "POST /api/mam/blobs/uploadblob?filename=App.plist&organizationgroupid="
    "570&moduleType=General",
    "POST /api/mam/groups/570/macos/apps"};

// What happens to the files: the 64 MiB installer changes while the console
// reads it, or the metadata is a named pipe or a file of /proc.
enum class Event { none, rewrite, truncate, extend, rename, pipe, proc };

void change(Event event, const e2e::fs::path &path) {
  if (event == Event::rewrite)
    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary)
        << std::string(MiB, 'w');
  if (event == Event::truncate)
    e2e::fs::resize_file(path, MiB);
  if (event == Event::extend)
    std::ofstream(path, std::ios::app | std::ios::binary) << "more";
  if (event == Event::rename) {
    testsupport::writeFile(path.string() + ".new", std::string(64 * MiB, 'n'));
    e2e::fs::rename(path.string() + ".new", path);
  }
}

// Writes \p text into the pipe at \p path as soon as the tool opens it.
void feedPipe(const e2e::fs::path &path, const std::string &text) {
  int fd = -1;
  for (int tries = 0; fd < 0 && tries < 3000; ++tries, ::usleep(10'000))
    fd = ::open(path.c_str(), O_WRONLY | O_NONBLOCK);
  ASSERT_GE(fd, 0);
  ::fcntl(fd, F_SETFL, 0);
  EXPECT_EQ(::write(fd, text.data(), text.size()), ssize_t(text.size()));
  ::close(fd);
}

Answer withNul(int status, std::string json) {
  return Answer{.status = status, .body = json + "\0{}"s};
}

struct Case {
  const char *what;
  Event event;
  std::optional<std::pair<Route, Answer>> answer;
  std::string out;
  int code;
  std::vector<std::string> requests;
};

TEST(IntegrityTest, TheConsoleGetsTheFileAsItWasAndTheToolTellsItsAnswer) {
  std::signal(SIGPIPE, SIG_IGN);
  const std::string installer(64 * MiB, 'i'), piped(100'000, 'p');
  const std::string proc = testsupport::readFile("/proc/version");
  const std::vector<std::string> lookup = {
      "GET /api/system/groups/search?groupID=Org2"};
  // clang-format off
  const Case cases[] = {
      {"installer rewritten in place", Event::rewrite, {}, changed, 47,
       {installerPost}},
      {"installer truncated", Event::truncate, {}, changed, 47,
       {installerPost}},
      {"installer extended", Event::extend, {}, changed, 47, {installerPost}},
      {"installer replaced by rename: the old bytes go", Event::rename, {},
       published, 0, all},
      {"a named pipe as metadata", Event::pipe, {}, published, 0, all},
      {"a /proc file, whose size reads 0, as metadata", Event::proc, {},
       published, 0, all},
      {"201 with its Location, then the body is cut off", Event::none,
       std::pair{Route::CreateApplication,
                 Answer{.status = 201, .body = R"({"Id":{"Value":4711}})",
                        .headers = {{"Location", "/apps/internal/4711"}},
                        .cutBodyAfter = 3}},
       published, 0, all},
      {"the group lookup's JSON, a NUL and more", Event::none,
       std::pair{Route::GroupSearch,
                 withNul(200, R"({"OrganizationGroups":[{"Id":571}]})")},
       "\n❗️Error: Unable to get a valid JSON response\n", 12, lookup},
      {"the blob upload's JSON, a NUL and more", Event::none,
       std::pair{Route::UploadBlob, withNul(200, R"({"Value":9})")},
       "\n\n\n❗️Error: Unable to get a valid JSON response while uploading "
       "the binary\n", 32, {installerPost}},
      {"the application's JSON message, a NUL and more", Event::none,
       std::pair{Route::CreateApplication,
                 withNul(409, R"({"message":"Application exists"})")},
       uploaded("installer") + uploaded("metadata") + "\n❗️Error: The API "
       "response error message is unknown while creating an application\n",
       53, all},
  };
  // clang-format on
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    bool changes = c.event >= Event::rewrite && c.event <= Event::rename;
    e2e::Scene scene({.bodyBytesPerSecond = 48 * MiB,
                      .keptBodyBytes = 64 * MiB,
                      .firstApplicationId = 4711});
    scene.store(scene.account());
    e2e::fs::path metadata = scene.dir() / "App.plist";
    testsupport::writeFile(scene.dir() / "App.pkg",
                           changes ? installer : installer.substr(0, 40'000));
    if (c.event == Event::pipe)
      ::mkfifo(metadata.c_str(), 0600);
    else if (c.event == Event::proc)
      e2e::fs::create_symlink("/proc/version", metadata);
    else
      testsupport::writeFile(metadata, "<plist/>");
    if (c.answer)
      scene.con().scriptAnswer(c.answer->first, c.answer->second);
    e2e::Args arguments = {"upload", "-i", "{dir}/App.pkg", "-m",
                           "{dir}/App.plist"};
    if (c.answer && c.answer->first == Route::GroupSearch)
      arguments.insert(arguments.end(), {"-g", "Org2"});
    auto running =
        std::async(std::launch::async, [&] { return scene.run(arguments); });
    if (changes) {
      // The tool reads at most some socket buffers ahead of the console.
      ASSERT_TRUE(
          scene.con().waitForBodyBytes(8 * MiB, std::chrono::seconds(30)));
      change(c.event, scene.dir() / "App.pkg");
    }
    if (c.event == Event::pipe)
      feedPipe(metadata, piped);
    e2e::Run run = running.get();
    EXPECT_EQ(run.out, scene.expand(c.out));
    EXPECT_EQ(run.code, c.code);
    EXPECT_EQ(run.err, "");
    scene.con().waitForRequests(c.requests.size(), std::chrono::seconds(10));
    EXPECT_EQ(scene.requests(), c.requests);
    // The bytes of the installer at opening, of the pipe, of the /proc file.
    std::vector<mockconsole::LoggedRequest> got = scene.con().getRequests();
    if (c.event >= Event::rename && got.size() == 3) {
      const std::string &sent = c.event == Event::rename ? installer
                                : c.event == Event::pipe ? piped
                                                         : proc;
      EXPECT_TRUE(got[c.event == Event::rename ? 0 : 1].body == sent);
    }
  }
}

// The proxy is a listener, so a request that starts, to any host, connects
// to it. The lookup URL of an empty hostname, "https:///api/...", names no
// host: nothing may connect.
TEST(IntegrityTest, AnEmptyHostnameStartsNoRequest) {
  int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t length = sizeof address;
  auto *named = reinterpret_cast<sockaddr *>(&address);
  ASSERT_EQ(::bind(listener, named, length), 0);
  ASSERT_EQ(::listen(listener, 8), 0);
  ::getsockname(listener, named, &length);
  std::string proxy =
      "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));

  testsupport::TempDir home;
  testsupport::ProcessOptions options;
  options.arguments = {"config",     "--signin", "-u", "alice",
                       "-p",         "s3cret",   "-k", "tenant-key",
                       "--hostname", "",         "-g", "Org1"};
  options.environment = {{"HOME", home.path().string()},
                         {"XDG_DATA_HOME", std::nullopt},
                         {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                         {"XDG_RUNTIME_DIR", std::nullopt},
                         {"no_proxy", std::nullopt},
                         {"https_proxy", proxy}};
  options.timeout = std::chrono::seconds(20);
  testsupport::ProcessResult result =
      testsupport::runProcess(e2e::toolPath(), options);
  EXPECT_EQ(e2e::withoutSpinner(result.standardOutput),
            "\n❗️Error: The URL is not supported (it names no host)\n");
  EXPECT_EQ(result.exitCode, 47);
  pollfd connection{listener, POLLIN, 0};
  EXPECT_EQ(::poll(&connection, 1, 0), 0) << "something connected";
  ::close(listener);
}

} // namespace
