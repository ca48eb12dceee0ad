#include "ConsoleFixture.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

using kestrune::CliError;
using mockconsole::Answer;
using mockconsole::Route;
using testing::StartsWith;
using urlsessiontest::answerWith;
using urlsessiontest::ConsoleFixture;
using urlsessiontest::droppedConnection;
using urlsessiontest::NoSessionUtil;
using urlsessiontest::NumberOutcome;

using FetchGroupIdNumTest = ConsoleFixture;

struct AnswerCase {
  const char *name;
  Answer answer;
  std::optional<std::int64_t> value;
  std::optional<CliError> error;
};

TEST_F(FetchGroupIdNumTest, TellsEveryAnswerOfTheConsoleApart) {
  const std::vector<AnswerCase> cases = {
      {"the group",
       answerWith(200, R"({"OrganizationGroups":[{"Id":42}]})"),
       42,
       {}},
      {"an integral float",
       answerWith(200, R"({"OrganizationGroups":[{"Id":5.0}]})"),
       5,
       {}},
      {"an exponent",
       answerWith(200, R"({"OrganizationGroups":[{"Id":1e2}]})"),
       100,
       {}},
      {"the smallest integer",
       answerWith(200,
                  R"({"OrganizationGroups":[{"Id":-9223372036854775808}]})"),
       std::numeric_limits<std::int64_t>::min(),
       {}},
      {"the first of several",
       answerWith(
           200, R"({"OrganizationGroups":[{"Id":7,"GroupId":"X"},{"Id":8}]})"),
       7,
       {}},
      {"HTML with 200",
       answerWith(200, "<html>Login</html>", {{"Content-Type", "text/html"}}),
       {},
       CliError::fetchGidAPIResponseParsingError()},
      {"HTML with 500",
       answerWith(500, "<html>Error</html>", {{"Content-Type", "text/html"}}),
       {},
       CliError::fetchGidAPIResponseParsingError()},
      {"204 without body",
       answerWith(204, ""),
       {},
       CliError::fetchGidAPIResponseParsingError()},
      {"200 without body",
       answerWith(200, ""),
       {},
       CliError::fetchGidAPIResponseParsingError()},
      {"404 text",
       answerWith(404, "not found"),
       {},
       CliError::fetchGidAPIResponseParsingError()},
      {"a top-level array",
       answerWith(200, R"([{"Id":42}])"),
       {},
       CliError::fetchGidAPIResponseParsingError()},
      {"an empty object",
       answerWith(200, "{}"),
       {},
       CliError::noOGInResponse()},
      {"an empty list",
       answerWith(200, R"({"OrganizationGroups":[]})"),
       {},
       CliError::noOGInResponse()},
      {"groups as an object",
       answerWith(200, R"({"OrganizationGroups":{"Id":1}})"),
       {},
       CliError::noOGInResponse()},
      {"groups of numbers",
       answerWith(200, R"({"OrganizationGroups":[1]})"),
       {},
       CliError::noOGInResponse()},
      {"an empty first group",
       answerWith(200, R"({"OrganizationGroups":[{}]})"),
       {},
       CliError::noOGId()},
      {"Id as text",
       answerWith(200, R"({"OrganizationGroups":[{"Id":"42"}]})"),
       {},
       CliError::noOGId()},
      {"a fractional Id",
       answerWith(200, R"({"OrganizationGroups":[{"Id":5.5}]})"),
       {},
       CliError::noOGId()},
      {"a huge Id",
       answerWith(200, R"({"OrganizationGroups":[{"Id":1e30}]})"),
       {},
       CliError::noOGId()},
      {"one past the largest",
       answerWith(200,
                  R"({"OrganizationGroups":[{"Id":9223372036854775808}]})"),
       {},
       CliError::noOGId()},
      {"a boolean Id",
       answerWith(200, R"({"OrganizationGroups":[{"Id":true}]})"),
       {},
       CliError::noOGId()},
      {"a null Id",
       answerWith(200, R"({"OrganizationGroups":[{"Id":null}]})"),
       {},
       CliError::noOGId()},
      {"401 with a message",
       answerWith(401, R"({"message":"Access denied"})"),
       {},
       CliError::fetchGidAPIResponseError("Access denied")},
      {"201 with a message",
       answerWith(201, R"({"message":"Created?"})"),
       {},
       CliError::fetchGidAPIResponseError("Created?")},
      {"201 with the group",
       answerWith(201, R"({"OrganizationGroups":[{"Id":42}]})"),
       {},
       CliError::unknownFetchGidResponseError()},
      {"500 without message",
       answerWith(500, "{}"),
       {},
       CliError::unknownFetchGidResponseError()},
      {"a message that isn't text",
       answerWith(500, R"({"message":5})"),
       {},
       CliError::unknownFetchGidResponseError()},
  };
  for (const AnswerCase &c : cases) {
    SCOPED_TRACE(c.name);
    console.scriptAnswer(Route::GroupSearch, c.answer);
    NumberOutcome outcome = fetchGroup("ACME");
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_TRUE(outcome.onCallingThread);
    EXPECT_EQ(outcome.value, c.value);
    EXPECT_EQ(outcome.error, c.error);
    EXPECT_EQ(outcome.printed, "");
  }
}

TEST_F(FetchGroupIdNumTest, AsksTheConsoleForTheGroupWithTheAccount) {
  NumberOutcome known = fetchGroup("ACME");
  EXPECT_EQ(known.value, 42);
  EXPECT_EQ(known.error, std::nullopt);
  EXPECT_EQ(console.getRequests().at(0).target,
            "/api/system/groups/search?groupID=ACME");

  EXPECT_EQ(fetchGroup("NOPE").error, CliError::noOGInResponse());

  config.password = "wrong";
  EXPECT_EQ(fetchGroup("ACME").error, CliError::fetchGidAPIResponseError(
                                          "User credentials are incorrect."));
}

TEST_F(FetchGroupIdNumTest, SendsTheGroupIdUnescaped) {
  struct Case {
    const char *groupId, *target;
  };
  const Case cases[] = {
      {"ACME&x=1", "/api/system/groups/search?groupID=ACME&x=1"},
      {"ACME#part", "/api/system/groups/search?groupID=ACME"},
      {"A%43ME", "/api/system/groups/search?groupID=A%43ME"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.groupId);
    EXPECT_EQ(fetchGroup(c.groupId).value, 42);
    EXPECT_EQ(console.getRequests().back().target, c.target);
  }
}

TEST_F(FetchGroupIdNumTest, SendsNothingForAGroupIdThatBreaksTheUrl) {
  for (const char *groupId : {"AC ME", "ACME\n", "50%", "caf\xc3\xa9"}) {
    SCOPED_TRACE(groupId);
    NumberOutcome outcome = fetchGroup(groupId);
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_EQ(outcome.value, std::nullopt);
    EXPECT_EQ(outcome.error,
              CliError::unableToFormAValidFetchGidURL(groupApiStr() + groupId));
  }
  EXPECT_TRUE(console.getRequests().empty());
}

TEST_F(FetchGroupIdNumTest, ReportsAMissingSessionWithoutSending) {
  NumberOutcome outcome = fetchGroup("ACME", NoSessionUtil());
  EXPECT_EQ(outcome.calls, 1);
  EXPECT_EQ(outcome.error, CliError::unableToFormFetchGroupIDURLSession());
  EXPECT_TRUE(console.getRequests().empty());
}

TEST_F(FetchGroupIdNumTest, CarriesTheClientsDescriptionOfANetworkFailure) {
  console.scriptAnswer(Route::GroupSearch, droppedConnection(0));
  NumberOutcome dropped = fetchGroup("ACME");
  ASSERT_TRUE(dropped.error.has_value());
  EXPECT_EQ(dropped.error->getCase(), CliError::Case::networkError);
  EXPECT_THAT(dropped.error->getPayload(),
              StartsWith("The network connection was lost ("));

  config.hostname = closedBaseUrl();
  NumberOutcome refused = fetchGroup("ACME");
  ASSERT_TRUE(refused.error.has_value());
  EXPECT_EQ(refused.error->getCase(), CliError::Case::networkError);
  EXPECT_THAT(refused.error->getPayload(),
              StartsWith("Could not connect to the server ("));
  EXPECT_EQ(refused.value, std::nullopt);
}

} // namespace
