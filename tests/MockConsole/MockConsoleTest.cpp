#include "MockConsole/MockConsole.h"

#include "MockConsole/BodyDigest.h"
#include "MockConsole/Exchange.h"
#include "Platform/UrlText.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <random>
#include <sstream>
#include <thread>

namespace {

using mockconsole::Answer;
using mockconsole::MockConsole;
using mockconsole::Route;
using mockconsoletest::exchange;
using mockconsoletest::makeRequest;
using mockconsoletest::Outcome;
using namespace std::chrono_literals;

std::string sha256Of(std::string_view bytes) {
  mockconsole::BodyDigest digest;
  digest.update(bytes.data(), bytes.size());
  return digest.finishHex();
}

std::string randomBytes(std::size_t size) {
  std::mt19937 generator(7);
  std::string bytes(size, '\0');
  for (char &c : bytes)
    c = static_cast<char>(generator());
  return bytes;
}

/// Default options changed by \p change.
template <typename Change> mockconsole::Options optionsWith(Change change) {
  mockconsole::Options options;
  change(options);
  return options;
}

nlohmann::json jsonOf(const Outcome &outcome) {
  return nlohmann::json::parse(outcome.data.value_or(""), nullptr, false);
}

platform::HttpSession sessionFor(const std::string &user,
                                 const std::string &password,
                                 const std::string &apiKey) {
  platform::HttpSessionConfiguration configuration;
  configuration.additionalHeaders = {
      {"Authorization",
       "Basic " + platform::encodeBase64(user + ":" + password)},
      {"qm-tenant-code", apiKey}};
  return platform::HttpSession(configuration);
}

class MockConsoleTest : public testing::Test {
protected:
  explicit MockConsoleTest(mockconsole::Options options = {})
      : console(std::move(options)) {}

  void SetUp() override {
    console.addAccount({"admin", "pa:ss", "KEY"});
    console.mapGroup("ACME", 42);
    console.start();
  }

  Outcome send(const std::string &method, const std::string &target,
               std::optional<std::string> body = std::nullopt) {
    return exchange(session,
                    makeRequest(console.getBaseUrl() + target, method,
                                body ? platform::HttpBody::fromBytes(*body)
                                     : platform::HttpBody()));
  }

  Outcome uploadBlob(const std::string &bytes,
                     const std::string &name = "a.pkg") {
    return send("POST",
                "/api/mam/blobs/uploadblob?filename=" + name +
                    "&organizationgroupid=42&moduleType=Application",
                bytes);
  }

  MockConsole console;
  platform::HttpSession session = sessionFor("admin", "pa:ss", "KEY");
};

TEST_F(MockConsoleTest, AnswersEachRouteAsTheConsoleDoes) {
  struct Case {
    const char *method, *target;
    std::optional<std::string> body;
    long status;
    const char *answer;
  };
  const Case cases[] = {
      {"GET",
       "/api/system/groups/search?groupID=ACME",
       {},
       200,
       R"({"OrganizationGroups":[{"GroupId":"ACME","Id":42,"Name":"ACME"}],"Page":0,"PageSize":500,"Total":1})"},
      {"GET",
       "/api/system/groups/search?groupID=NOPE",
       {},
       200,
       R"({"OrganizationGroups":[],"Page":0,"PageSize":500,"Total":0})"},
      {"GET",
       "/api/unknown",
       {},
       404,
       R"({"message":"There is no such resource: GET /api/unknown"})"},
      {"POST",
       "/api/mam/blobs/uploadblob?organizationgroupid=42&moduleType=General",
       "x", 400, R"({"message":"The filename is missing."})"},
      {"POST",
       "/api/mam/blobs/"
       "uploadblob?filename=a&organizationgroupid=42&moduleType=Other",
       "x", 400, R"({"message":"The moduleType 'Other' is not known."})"},
      {"POST",
       "/api/mam/blobs/"
       "uploadblob?filename=a&organizationgroupid=7&moduleType=General",
       "x", 400, R"({"message":"The organization group '7' does not exist."})"},
      {"POST",
       "/api/mam/blobs/"
       "uploadblob?filename=a&organizationgroupid=42&moduleType=General",
       "", 400, R"({"message":"The uploaded file is empty."})"},
      {"POST", "/api/mam/groups/99/macos/apps", "{}", 404,
       R"({"message":"The organization group '99' does not exist."})"},
      {"POST", "/api/mam/groups/42/macos/apps", "<xml/>", 400,
       R"({"message":"The request body is not a JSON object."})"},
      {"POST", "/api/mam/groups/42/macos/apps",
       R"({"pkgInfoBlobId": 1, "applicationBlobId": 2})", 400,
       R"({"message":"applicationBlobId names no blob."})"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.target);
    Outcome outcome = send(c.method, c.target, c.body);
    ASSERT_TRUE(outcome.response.has_value());
    EXPECT_EQ(outcome.response->statusCode, c.status);
    EXPECT_EQ(outcome.data, c.answer);
    EXPECT_EQ(outcome.response->getHeader("content-type"), "application/json");
  }
}

TEST_F(MockConsoleTest, RefusesRequestsWithoutTheAccountsCredentials) {
  struct Case {
    const char *user, *password, *apiKey;
    long status;
    const char *message;
  };
  const Case cases[] = {
      {"admin", "pa:ss", "KEY", 200, nullptr},
      {"admin", "wrong", "KEY", 401, "User credentials are incorrect."},
      {"nobody", "pa:ss", "KEY", 401, "User credentials are incorrect."},
      {"admin", "pa:ss", "OTHER", 401,
       "The API key (qm-tenant-code) is not valid for this user."},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::string(c.user) + ":" + c.password + " " + c.apiKey);
    Outcome outcome =
        exchange(sessionFor(c.user, c.password, c.apiKey),
                 makeRequest(console.getBaseUrl() +
                             "/api/system/groups/search?groupID=ACME"));
    ASSERT_TRUE(outcome.response.has_value());
    EXPECT_EQ(outcome.response->statusCode, c.status);
    if (c.message) {
      EXPECT_EQ(jsonOf(outcome)["message"], c.message);
    }
  }
  Outcome bare =
      exchange(platform::HttpSession({}),
               makeRequest(console.getBaseUrl() +
                           "/api/system/groups/search?groupID=ACME"));
  EXPECT_EQ(bare.response->statusCode, 401);
}

class NumberedConsoleTest : public MockConsoleTest {
protected:
  NumberedConsoleTest()
      : MockConsoleTest(optionsWith([](auto &options) {
          options.firstBlobId = 100;
          options.firstApplicationId = 4711;
        })) {}
};

TEST_F(NumberedConsoleTest, StoresBlobsAndCreatesTheApplicationThatTiesThem) {
  std::string installer = randomBytes(300'000);
  EXPECT_EQ(uploadBlob(installer, "My%20App.pkg").data, R"({"Value":100})");
  EXPECT_EQ(uploadBlob("<plist/>", "a.plist").data, R"({"Value":101})");

  Outcome created =
      send("POST", "/api/mam/groups/42/macos/apps",
           "{\n  \"pkgInfoBlobId\": 101,\n  \"isManagedInstall\": true,\n"
           "  \"applicationBlobId\": 100\n}");
  ASSERT_TRUE(created.response.has_value());
  EXPECT_EQ(created.response->statusCode, 201);
  EXPECT_EQ(created.response->getHeader("Location"),
            console.getBaseUrl() + "/api/mam/apps/internal/4711");

  std::vector<mockconsole::StoredBlob> blobs = console.getBlobs();
  ASSERT_EQ(blobs.size(), 2u);
  EXPECT_EQ(blobs[0].filename, "My App.pkg");
  EXPECT_EQ(blobs[0].organizationGroupId, 42);
  EXPECT_EQ(blobs[0].moduleType, "Application");
  EXPECT_EQ(blobs[0].length, installer.size());
  EXPECT_EQ(blobs[0].sha256, sha256Of(installer));
}

TEST_F(MockConsoleTest, ScriptedAnswersReplaceTheConsolesByRouteAndCall) {
  Answer failure;
  failure.status = 500;
  failure.body = R"({"message":"boom"})";
  failure.headers = {{"X-Scripted", "yes"}, {"Content-Type", "text/html"}};
  console.scriptAnswer(Route::GroupSearch, 2, failure);
  Answer created;
  created.status = 201;
  console.scriptAnswer(Route::UploadBlob, created);

  auto lookUp = [&] {
    return send("GET", "/api/system/groups/search?groupID=ACME");
  };
  EXPECT_EQ(lookUp().response->statusCode, 200);
  Outcome second = lookUp();
  EXPECT_EQ(second.response->statusCode, 500);
  EXPECT_EQ(second.data, R"({"message":"boom"})");
  EXPECT_EQ(second.response->getHeader("X-Scripted"), "yes");
  EXPECT_EQ(second.response->getHeader("Content-Type"), "text/html");
  EXPECT_EQ(lookUp().response->statusCode, 200);
  EXPECT_EQ(uploadBlob("x").response->statusCode, 201);
  EXPECT_EQ(uploadBlob("x").response->statusCode, 201);

  console.clearScriptedAnswers();
  EXPECT_EQ(uploadBlob("x").response->statusCode, 200);
}

TEST_F(MockConsoleTest, DroppedConnectionsLeaveTheClientWithoutAnAnswer) {
  Answer dropAtOnce;
  dropAtOnce.dropAfterBodyBytes = 0;
  console.scriptAnswer(Route::GroupSearch, dropAtOnce);
  Answer dropMidway;
  dropMidway.dropAfterBodyBytes = 200'000;
  console.scriptAnswer(Route::UploadBlob, dropMidway);

  Outcome lookup = send("GET", "/api/system/groups/search?groupID=ACME");
  EXPECT_TRUE(lookup.error.has_value());
  EXPECT_FALSE(lookup.response.has_value());

  Outcome upload = uploadBlob(randomBytes(4 * 1024 * 1024));
  EXPECT_TRUE(upload.error.has_value());
  EXPECT_FALSE(upload.response.has_value());

  std::vector<mockconsole::LoggedRequest> log = console.getRequests();
  ASSERT_EQ(log.size(), 2u);
  EXPECT_EQ(log[0].status, 0);
  EXPECT_EQ(log[1].status, 0);
  EXPECT_EQ(log[1].bodyLength, 200'000u);
}

TEST_F(MockConsoleTest, DelaysAnAnswerAsScripted) {
  Answer slow;
  slow.delay = 400ms;
  slow.body = "{}";
  console.scriptAnswer(Route::GroupSearch, slow);
  auto begin = std::chrono::steady_clock::now();
  Outcome outcome = send("GET", "/api/system/groups/search?groupID=ACME");
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 400ms);
  EXPECT_EQ(outcome.data, "{}");
}

TEST_F(MockConsoleTest, HoldsAnAnswerUntilReleased) {
  Answer held;
  held.holdUntilReleased = true;
  held.status = 202;
  console.scriptAnswer(Route::GroupSearch, held);
  std::atomic<bool> answered = false;
  Outcome outcome;
  std::thread client([&] {
    outcome = send("GET", "/api/system/groups/search?groupID=ACME");
    answered = true;
  });
  ASSERT_TRUE(console.waitForRequests(1, 10s));
  std::this_thread::sleep_for(300ms);
  EXPECT_FALSE(answered);
  console.releaseHeldAnswers();
  client.join();
  EXPECT_EQ(outcome.response->statusCode, 202);
}

TEST_F(MockConsoleTest, StopsWhileAnAnswerIsHeld) {
  Answer held;
  held.holdUntilReleased = true;
  console.scriptAnswer(Route::GroupSearch, held);
  std::thread client(
      [&] { send("GET", "/api/system/groups/search?groupID=ACME"); });
  ASSERT_TRUE(console.waitForRequests(1, 10s));
  console.stop();
  client.join();
}

TEST_F(MockConsoleTest, LogsEachRequestAsReceived) {
  send(
      "POST",
      "/api/mam/blobs/"
      "uploadblob?filename=a%20b.pkg&organizationgroupid=42&moduleType=General",
      "abc");
  std::vector<mockconsole::LoggedRequest> log = console.getRequests();
  ASSERT_EQ(log.size(), 1u);
  const mockconsole::LoggedRequest &entry = log[0];
  EXPECT_EQ(entry.route, Route::UploadBlob);
  EXPECT_EQ(entry.method, "POST");
  EXPECT_EQ(entry.target, "/api/mam/blobs/uploadblob?filename=a%20b.pkg&"
                          "organizationgroupid=42&moduleType=General");
  EXPECT_EQ(entry.bodyLength, 3u);
  EXPECT_EQ(entry.bodySha256,
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(entry.body, "abc");
  EXPECT_EQ(entry.status, 200);
  mockconsole::Headers expected = {
      {"Authorization", "Basic " + platform::encodeBase64("admin:pa:ss")},
      {"Content-Length", "3"},
      {"Host", "127.0.0.1:" + std::to_string(console.getPort())},
      {"qm-tenant-code", "KEY"}};
  EXPECT_EQ(entry.headers, expected);
  EXPECT_EQ(entry.getHeader("HOST"), expected[2].second);
}

/// Comes first among the bases, so that the directory exists before the
/// console is made.
struct LogDirectory {
  testsupport::TempDir directory;
};

class LoggingConsoleTest : protected LogDirectory, public MockConsoleTest {
protected:
  LoggingConsoleTest()
      : MockConsoleTest(optionsWith([this](auto &options) {
          options.logPath = directory.path() / "log";
        })) {}
};

TEST_F(LoggingConsoleTest, WritesOneJsonLinePerRequest) {
  send("GET", "/api/system/groups/search?groupID=ACME");
  uploadBlob("abc");
  std::istringstream lines(testsupport::readFile(directory.path() / "log"));
  std::vector<nlohmann::json> entries;
  for (std::string line; std::getline(lines, line);)
    entries.push_back(nlohmann::json::parse(line));
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0]["route"], "groups");
  EXPECT_EQ(entries[0]["method"], "GET");
  EXPECT_EQ(entries[0]["target"], "/api/system/groups/search?groupID=ACME");
  EXPECT_EQ(entries[0]["status"], 200);
  EXPECT_EQ(entries[1]["route"], "blobs");
  EXPECT_EQ(entries[1]["bodyLength"], 3);
  EXPECT_EQ(entries[1]["bodySha256"],
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_TRUE(entries[1]["headers"].is_array());
}

class CountingConsoleTest : public MockConsoleTest {
protected:
  CountingConsoleTest()
      : MockConsoleTest(
            optionsWith([](auto &options) { options.hashBodies = false; })) {}
};

TEST_F(CountingConsoleTest, CountsLargeBodiesWithoutHashingWhenAskedTo) {
  std::string bytes = randomBytes(5 * 1024 * 1024 + 3);
  EXPECT_EQ(uploadBlob(bytes).response->statusCode, 200);
  std::vector<mockconsole::LoggedRequest> log = console.getRequests();
  ASSERT_EQ(log.size(), 1u);
  EXPECT_EQ(log[0].bodyLength, bytes.size());
  EXPECT_EQ(log[0].bodySha256, "");
  EXPECT_EQ(log[0].body.size(), 64u * 1024);
}

TEST(MockConsoleStartTest, FailsLoudlyWhenTheLogCantBeWritten) {
  MockConsole console(optionsWith(
      [](auto &options) { options.logPath = "/nonexistent/dir/log"; }));
  EXPECT_THROW(console.start(), std::runtime_error);
}

TEST(MockConsoleStartTest, FailsLoudlyWhenThePortIsTaken) {
  MockConsole first;
  first.start();
  MockConsole second(
      optionsWith([&](auto &options) { options.port = first.getPort(); }));
  EXPECT_THROW(second.start(), std::runtime_error);
}

} // namespace
