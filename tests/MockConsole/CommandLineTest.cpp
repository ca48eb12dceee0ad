#include "MockConsole/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using mockconsole::CommandLine;
using mockconsole::parseCommandLine;
using mockconsole::Route;
using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(CommandLineTest, ReadsEveryOption) {
  CommandLine commandLine =
      parseCommandLine({"--bind",          "127.0.0.2",
                        "--port",          "8080",
                        "--account",       "admin:pa:ss:KEY",
                        "--group",         "ACME=42",
                        "--group",         "a=b=7",
                        "--first-blob-id", "100",
                        "--first-app-id",  "4711",
                        "--answer",        "blobs#2=500:{\"message\":\"a:b\"}",
                        "--answer",        "apps=400",
                        "--drop",          "groups#3",
                        "--log",           "/tmp/x.log",
                        "--no-hash"});
  EXPECT_EQ(commandLine.options.bindAddress, "127.0.0.2");
  EXPECT_EQ(commandLine.options.port, 8080);
  ASSERT_EQ(commandLine.accounts.size(), 1u);
  EXPECT_EQ(commandLine.accounts[0].username, "admin");
  EXPECT_EQ(commandLine.accounts[0].password, "pa:ss");
  EXPECT_EQ(commandLine.accounts[0].apiKey, "KEY");
  using Group = std::pair<std::string, std::int64_t>;
  EXPECT_EQ(commandLine.groups, (std::vector<Group>{{"ACME", 42}, {"a=b", 7}}));
  EXPECT_EQ(commandLine.options.firstBlobId, 100);
  EXPECT_EQ(commandLine.options.firstApplicationId, 4711);
  EXPECT_EQ(commandLine.options.logPath, "/tmp/x.log");
  EXPECT_FALSE(commandLine.options.hashBodies);
  EXPECT_FALSE(commandLine.showHelp);

  ASSERT_EQ(commandLine.scriptedCalls.size(), 3u);
  const auto &blobs = commandLine.scriptedCalls[0];
  EXPECT_EQ(blobs.route, Route::UploadBlob);
  EXPECT_EQ(blobs.call, 2);
  EXPECT_EQ(blobs.answer.status, 500);
  EXPECT_EQ(blobs.answer.body, R"({"message":"a:b"})");
  const auto &apps = commandLine.scriptedCalls[1];
  EXPECT_EQ(apps.route, Route::CreateApplication);
  EXPECT_EQ(apps.call, std::nullopt);
  EXPECT_EQ(apps.answer.status, 400);
  EXPECT_EQ(apps.answer.body, "");
  const auto &drop = commandLine.scriptedCalls[2];
  EXPECT_EQ(drop.route, Route::GroupSearch);
  EXPECT_EQ(drop.call, 3);
  EXPECT_EQ(drop.answer.dropAfterBodyBytes, 0u);
}

TEST(CommandLineTest, DefaultsServeALoopbackPortOfTheSystemsChoosing) {
  CommandLine commandLine = parseCommandLine({});
  EXPECT_EQ(commandLine.options.bindAddress, "127.0.0.1");
  EXPECT_EQ(commandLine.options.port, 0);
  EXPECT_TRUE(commandLine.options.hashBodies);
  EXPECT_TRUE(parseCommandLine({"-h"}).showHelp);
  EXPECT_TRUE(parseCommandLine({"--help"}).showHelp);
}

TEST(CommandLineTest, RejectsBadOptionsNamingThem) {
  struct Case {
    std::vector<std::string> arguments;
    const char *message;
  };
  const Case cases[] = {
      {{"--port"}, "--port: a value is missing"},
      {{"--port", "http"}, "--port: 'http' is not a whole number"},
      {{"--port", "70000"}, "--port: out of range"},
      {{"--account", "admin:pass"}, "--account: expected USER:PASSWORD:APIKEY"},
      {{"--group", "ACME"}, "--group: expected ID=NUMBER"},
      {{"--group", "ACME=x"}, "--group: 'x' is not a whole number"},
      {{"--answer", "blobs"}, "--answer: expected ROUTE[#CALL]=STATUS[:BODY]"},
      {{"--answer", "files=200"}, "--answer: unknown route 'files'"},
      {{"--answer", "blobs#0=200"}, "--answer: the call is counted from 1"},
      {{"--answer", "blobs=42"}, "--answer: status out of range"},
      {{"--drop", "apps#x"}, "--drop: 'x' is not a whole number"},
      {{"--verbose", "1"}, "unknown option '--verbose'"},
      {{"stray"}, "unexpected argument 'stray'"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.arguments.front());
    EXPECT_THAT([&] { parseCommandLine(c.arguments); },
                ThrowsMessage<std::invalid_argument>(HasSubstr(c.message)));
  }
}

TEST(CommandLineTest, HelpNamesEveryOption) {
  for (const char *option : {"--bind", "--port", "--account", "--group",
                             "--first-blob-id", "--first-app-id", "--answer",
                             "--drop", "--log", "--no-hash", "--help"}) {
    SCOPED_TRACE(option);
    EXPECT_THAT(std::string(mockconsole::getHelpText()), HasSubstr(option));
  }
}

} // namespace
