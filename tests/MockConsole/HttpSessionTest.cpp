// The HTTP client and the console simulator, each checked against the
// other over loopback.
#include "Platform/HttpSession.h"

#include "MockConsole/BodyDigest.h"
#include "MockConsole/Exchange.h"
#include "MockConsole/MockConsole.h"
#include "Support/TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using mockconsole::Answer;
using mockconsole::MockConsole;
using mockconsole::Route;
using mockconsoletest::exchange;
using mockconsoletest::makeRequest;
using mockconsoletest::Outcome;
using testing::HasSubstr;
using testing::StartsWith;

platform::HttpSession sessionWith(platform::HttpHeaders headers) {
  platform::HttpSessionConfiguration configuration;
  configuration.additionalHeaders = std::move(headers);
  return platform::HttpSession(configuration);
}

Answer redirectTo(int status, std::string location) {
  Answer answer;
  answer.status = status;
  answer.headers = {{"Location", std::move(location)}};
  return answer;
}

class HttpSessionTest : public testing::Test {
protected:
  void SetUp() override { console.start(); }
  std::string url(const std::string &path) {
    return console.getBaseUrl() + path;
  }
  MockConsole console;
};

TEST_F(HttpSessionTest, SendsOnlyTheGivenFieldsAndWhatHttpNeeds) {
  platform::HttpSession session =
      sessionWith({{"X-One", "1"}, {"Accept", "text/x"}});
  exchange(session, makeRequest(url("/a")));
  exchange(session, makeRequest(url("/b"), "POST",
                                platform::HttpBody::fromBytes(
                                    std::string(2 * 1024 * 1024, 'x'))));
  exchange(session, makeRequest(url("/c"), "POST"));
  std::string host = "127.0.0.1:" + std::to_string(console.getPort());
  std::vector<mockconsole::Headers> expected = {
      {{"Accept", "text/x"}, {"Host", host}, {"X-One", "1"}},
      {{"Accept", "text/x"},
       {"Content-Length", "2097152"},
       {"Host", host},
       {"X-One", "1"}},
      {{"Accept", "text/x"},
       {"Content-Length", "0"},
       {"Host", host},
       {"X-One", "1"}},
  };
  std::vector<mockconsole::LoggedRequest> log = console.getRequests();
  ASSERT_EQ(log.size(), expected.size());
  for (std::size_t i = 0; i < log.size(); ++i) {
    SCOPED_TRACE(log[i].target);
    EXPECT_EQ(log[i].headers, expected[i]);
  }
}

// The simulator's server library drops fields with an empty value, so this
// one reads the request off a plain socket.
TEST(HttpSessionWireTest, SendsAnEmptyValueAsAnEmptyField) {
  int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&address), length), 0);
  ASSERT_EQ(listen(listener, 1), 0);
  getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length);
  std::string head;
  std::thread server([&] {
    int connection = accept(listener, nullptr, nullptr);
    char buffer[4096];
    while (head.find("\r\n\r\n") == std::string::npos) {
      ssize_t n = recv(connection, buffer, sizeof buffer, 0);
      if (n <= 0)
        break;
      head.append(buffer, static_cast<std::size_t>(n));
    }
    std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
    send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
    close(connection);
  });
  std::string url =
      "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/e";
  Outcome outcome = exchange(sessionWith({{"X-Empty", ""}, {"X-One", "1"}}),
                             makeRequest(url));
  server.join();
  close(listener);
  EXPECT_EQ(outcome.response->statusCode, 200);
  EXPECT_EQ(head, "GET /e HTTP/1.1\r\nHost: 127.0.0.1:" +
                      std::to_string(ntohs(address.sin_port)) +
                      "\r\nX-Empty:\r\nX-One: 1\r\n\r\n");
}

TEST_F(HttpSessionTest, RefusesFieldsThatWouldSplitTheRequest) {
  const platform::HttpHeaders invalid[] = {
      {{"X-Key", "a\r\nX-Injected: 1"}},
      {{"X-Key", std::string("a\0b", 3)}},
      {{"Bad Name", "1"}},
      {{"", "1"}},
  };
  for (const platform::HttpHeaders &headers : invalid) {
    SCOPED_TRACE(headers[0].first);
    Outcome outcome = exchange(sessionWith(headers), makeRequest(url("/")));
    ASSERT_TRUE(outcome.error.has_value());
    EXPECT_THAT(outcome.error->description,
                StartsWith("The request could not be made"));
    EXPECT_THAT(outcome.error->description, testing::Not(HasSubstr("a\r\n")));
  }
  EXPECT_TRUE(console.getRequests().empty());
}

TEST_F(HttpSessionTest, FollowsRedirectsChangingTheMethodAsBrowsersDo) {
  struct Case {
    int status;
    const char *method;
    std::uint64_t bodyLength;
  };
  const Case cases[] = {
      {301, "GET", 0},  {302, "GET", 0},  {303, "GET", 0},
      {307, "POST", 5}, {308, "POST", 5},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.status);
    MockConsole target;
    target.start();
    console.scriptAnswer(Route::Other,
                         redirectTo(c.status, target.getBaseUrl() + "/next"));
    Outcome outcome = exchange(
        sessionWith({}), makeRequest(url("/first"), "POST",
                                     platform::HttpBody::fromBytes("hello")));
    ASSERT_TRUE(outcome.response.has_value());
    EXPECT_EQ(outcome.response->statusCode, 404);
    EXPECT_FALSE(outcome.response->getHeader("Location").has_value());
    std::vector<mockconsole::LoggedRequest> log = target.getRequests();
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].method, c.method);
    EXPECT_EQ(log[0].target, "/next");
    EXPECT_EQ(log[0].bodyLength, c.bodyLength);
  }
}

TEST_F(HttpSessionTest, KeepsCredentialsFromOtherServersAfterARedirect) {
  mockconsole::Options options;
  options.bindAddress = "127.0.0.2";
  MockConsole elsewhere(options);
  elsewhere.start();
  console.scriptAnswer(Route::Other, 1, redirectTo(302, url("/same")));
  console.scriptAnswer(Route::Other, 2,
                       redirectTo(307, elsewhere.getBaseUrl() + "/other"));
  platform::HttpSessionConfiguration configuration;
  configuration.additionalHeaders = {{"Authorization", "Basic c2VjcmV0"},
                                     {"X-Api-Key", "KEY"},
                                     {"X-Plain", "1"}};
  configuration.originBoundHeaders = {"authorization", "X-Api-Key"};
  exchange(platform::HttpSession(configuration), makeRequest(url("/start")));

  std::vector<mockconsole::LoggedRequest> here = console.getRequests();
  ASSERT_EQ(here.size(), 2u);
  EXPECT_EQ(here[1].target, "/same");
  EXPECT_EQ(here[1].getHeader("Authorization"), "Basic c2VjcmV0");
  EXPECT_EQ(here[1].getHeader("X-Api-Key"), "KEY");
  std::vector<mockconsole::LoggedRequest> there = elsewhere.getRequests();
  ASSERT_EQ(there.size(), 1u);
  EXPECT_FALSE(there[0].getHeader("Authorization").has_value());
  EXPECT_FALSE(there[0].getHeader("X-Api-Key").has_value());
  EXPECT_EQ(there[0].getHeader("X-Plain"), "1");
}

TEST_F(HttpSessionTest, GivesUpOnEndlessRedirects) {
  console.scriptAnswer(Route::Other, redirectTo(302, url("/again")));
  Outcome outcome = exchange(sessionWith({}), makeRequest(url("/again")));
  ASSERT_TRUE(outcome.error.has_value());
  EXPECT_THAT(outcome.error->description,
              StartsWith("There were too many redirects"));
  EXPECT_EQ(console.getRequests().size(), 21u);
}

TEST_F(HttpSessionTest, DescribesFailuresInAReadableSentence) {
  MockConsole closed;
  closed.start();
  std::string closedUrl = closed.getBaseUrl();
  closed.stop();
  Answer drop;
  drop.dropAfterBodyBytes = 0;
  console.scriptAnswer(Route::Other, drop);
  struct Case {
    std::string url, sentence;
  };
  const Case cases[] = {
      {closedUrl + "/", "Could not connect to the server ("},
      {url("/dropped"), "The network connection was lost ("},
      {"ftp://127.0.0.1/", "The URL is not supported ("},
      {"https://127.0.0.1:" + std::to_string(console.getPort()) + "/",
       "A secure connection to the server could not be made ("},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.url);
    Outcome outcome = exchange(sessionWith({}), makeRequest(c.url));
    ASSERT_TRUE(outcome.error.has_value());
    EXPECT_FALSE(outcome.response.has_value());
    EXPECT_FALSE(outcome.data.has_value());
    EXPECT_THAT(outcome.error->description, StartsWith(c.sentence));
  }
}

TEST_F(HttpSessionTest, StreamsAFileBodyAsItIsOnDisk) {
  testsupport::TempDir directory;
  std::string bytes(3 * 1024 * 1024 + 17, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<char>(i * 31 % 251);
  testsupport::writeFile(directory.path() / "file", bytes);
  std::optional<platform::HttpBody> body =
      platform::HttpBody::openFile(directory.path() / "file");
  ASSERT_TRUE(body.has_value());
  EXPECT_EQ(body->getSize(), bytes.size());

  Outcome outcome =
      exchange(sessionWith({}), makeRequest(url("/f"), "POST", *body));
  ASSERT_TRUE(outcome.response.has_value());
  mockconsole::LoggedRequest logged = console.getRequests().at(0);
  EXPECT_EQ(logged.bodyLength, bytes.size());
  EXPECT_EQ(logged.getHeader("Content-Length"), std::to_string(bytes.size()));
  EXPECT_EQ(logged.body, bytes.substr(0, logged.body.size()));
  mockconsole::BodyDigest digest;
  digest.update(bytes.data(), bytes.size());
  EXPECT_EQ(logged.bodySha256, digest.finishHex());
}

TEST_F(HttpSessionTest, FailsWhenAFileShrinksBeforeItIsSent) {
  testsupport::TempDir directory;
  std::filesystem::path path = directory.path() / "file";
  testsupport::writeFile(path, std::string(100'000, 'x'));
  std::optional<platform::HttpBody> body = platform::HttpBody::openFile(path);
  ASSERT_TRUE(body.has_value());
  std::filesystem::resize_file(path, 10);
  Outcome outcome =
      exchange(sessionWith({}), makeRequest(url("/f"), "POST", *body));
  ASSERT_TRUE(outcome.error.has_value());
  EXPECT_THAT(outcome.error->description,
              HasSubstr("became shorter while it was being sent"));
}

TEST(HttpBodyTest, OpensOnlyReadableRegularFiles) {
  testsupport::TempDir directory;
  testsupport::writeFile(directory.path() / "empty", "");
  EXPECT_EQ(platform::HttpBody::openFile(directory.path() / "empty")->getSize(),
            0u);
  EXPECT_FALSE(platform::HttpBody::openFile(directory.path()).has_value());
  EXPECT_FALSE(
      platform::HttpBody::openFile(directory.path() / "missing").has_value());
}

} // namespace
