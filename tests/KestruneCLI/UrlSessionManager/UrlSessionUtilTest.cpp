#include "ConsoleFixture.h"

#include <atomic>
#include <chrono>
#include <vector>

namespace {

using kestrune::BlobType;
using kestrune::CliError;
using kestrune::ConfigModel;
using kestrune::UrlSessionManager;
using kestrune::UrlSessionUtil;
using mockconsole::Route;
using urlsessiontest::answerWith;
using urlsessiontest::ConsoleFixture;
using urlsessiontest::NumberOutcome;
using namespace std::chrono_literals;

TEST(UrlSessionUtilTest, MakesTheFourHeaderFieldsFromTheAccount) {
  struct Case {
    const char *username, *password, *apiKey, *authorization;
  };
  const Case cases[] = {
      {"admin", "secret", "KEY", "Basic YWRtaW46c2VjcmV0"},
      {"admin", "pa:ss", "KEY", "Basic YWRtaW46cGE6c3M="},
      {"ad:min", "", "KEY", "Basic YWQ6bWluOg=="},
      {"j\xc3\xb6rg", "p\xc3\xa4ss", "KEY", "Basic asO2cmc6cMOkc3M="},
      {"admin", "secret", " K E Y\t", "Basic YWRtaW46c2VjcmV0"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.authorization);
    ConfigModel config{c.username, c.password, c.apiKey, "https://h", "G", 1};
    std::optional<platform::HttpHeaders> headers;
    std::string printed = testsupport::captureStdout(
        [&] { headers = UrlSessionManager::configureHeaders(config); });
    platform::HttpHeaders expected = {{"Authorization", c.authorization},
                                      {"qm-tenant-code", c.apiKey},
                                      {"Content-Type", "application/json"},
                                      {"Accept", "application/json;version=2"}};
    EXPECT_EQ(headers, expected);
    EXPECT_EQ(printed, "");
  }
}

TEST(UrlSessionUtilTest, GivesNoSessionForCredentialsThatArentUtf8) {
  for (ConfigModel config :
       {ConfigModel{"adm\xffin", "secret", "KEY", "https://h", "G", 1},
        ConfigModel{"admin", "\xc3", "KEY", "https://h", "G", 1}}) {
    std::optional<platform::HttpSession> session;
    std::string printed = testsupport::captureStdout(
        [&] { session = UrlSessionUtil::shared().getUrlSession(config); });
    EXPECT_FALSE(session.has_value());
    EXPECT_EQ(printed, "\n❗️ERROR: Unable to get a base 64 encoded value\n"
                       "\n❗️Unable to configure request headers. \n\n");
  }
}

class OnTheWireTest : public ConsoleFixture {};

TEST_F(OnTheWireTest, EveryRequestCarriesExactlyTheAccountsFields) {
  fetchGroup("ACME");
  uploadBytes(std::string(3 * 1024 * 1024, 'x'));
  createApplication(1, 1, std::nullopt);

  std::string host = "127.0.0.1:" + std::to_string(console.getPort());
  mockconsole::Headers common = {{"Accept", "application/json;version=2"},
                                 {"Authorization", "Basic YWRtaW46cGE6c3M="},
                                 {"Content-Type", "application/json"},
                                 {"Host", host},
                                 {"qm-tenant-code", "KEY"}};
  auto withLength = [&](const std::string &length) {
    mockconsole::Headers headers = common;
    headers.insert(headers.begin() + 2, {"Content-Length", length});
    return headers;
  };
  std::vector<mockconsole::Headers> expected = {common, withLength("3145728"),
                                                withLength("78")};
  std::vector<mockconsole::LoggedRequest> log = console.getRequests();
  ASSERT_EQ(log.size(), 3u);
  for (std::size_t i = 0; i < log.size(); ++i) {
    SCOPED_TRACE(log[i].target);
    EXPECT_EQ(log[i].headers, expected[i]);
    EXPECT_LT(log[i].status, 300);
  }
}

TEST_F(OnTheWireTest, TwoOperationsUseTwoSessionsWithTheSameFields) {
  fetchGroup("ACME");
  fetchGroup("ACME");
  std::vector<mockconsole::LoggedRequest> log = console.getRequests();
  ASSERT_EQ(log.size(), 2u);
  EXPECT_NE(log[0].clientPort, log[1].clientPort);
  EXPECT_EQ(log[0].headers, log[1].headers);
}

TEST_F(OnTheWireTest, CredentialsNeverFollowARedirectToAnotherServer) {
  mockconsole::Options options;
  options.bindAddress = "127.0.0.2";
  mockconsole::MockConsole elsewhere(options);
  elsewhere.addAccount({"admin", "pa:ss", "KEY"});
  elsewhere.mapGroup("ACME", 7);
  elsewhere.start();
  console.scriptAnswer(Route::GroupSearch,
                       answerWith(302, "",
                                  {{"Location", elsewhere.getBaseUrl() +
                                                    "/api/system/groups/search?"
                                                    "groupID=ACME"}}));

  NumberOutcome outcome = fetchGroup("ACME");
  EXPECT_EQ(outcome.error, CliError::fetchGidAPIResponseError(
                               "User credentials are incorrect."));
  std::vector<mockconsole::LoggedRequest> log = elsewhere.getRequests();
  ASSERT_EQ(log.size(), 1u);
  EXPECT_FALSE(log[0].getHeader("Authorization").has_value());
  EXPECT_FALSE(log[0].getHeader("qm-tenant-code").has_value());
  EXPECT_EQ(log[0].getHeader("Accept"), "application/json;version=2");
}

TEST_F(OnTheWireTest, ARedirectOnTheSameServerKeepsTheCredentials) {
  console.scriptAnswer(
      Route::GroupSearch, 1,
      answerWith(307, "",
                 {{"Location", "/api/system/groups/search?groupID=ACME"}}));
  EXPECT_EQ(fetchGroup("OLD").value, 42);
  std::vector<mockconsole::LoggedRequest> log = console.getRequests();
  ASSERT_EQ(log.size(), 2u);
  EXPECT_EQ(log[1].headers, log[0].headers);
}

TEST_F(OnTheWireTest, WaitsForAConsoleThatNeverAnswers) {
  mockconsole::Answer held = answerWith(200, R"({"Value":9})");
  held.holdUntilReleased = true;
  console.scriptAnswer(Route::UploadBlob, held);
  std::atomic<bool> done = false;
  NumberOutcome outcome;
  std::thread caller([&] {
    outcome = uploadBytes("x");
    done = true;
  });
  ASSERT_TRUE(console.waitForRequests(1, 10s));
  std::this_thread::sleep_for(1500ms);
  EXPECT_FALSE(done);
  console.releaseHeldAnswers();
  caller.join();
  EXPECT_EQ(outcome.value, 9);
}

} // namespace
