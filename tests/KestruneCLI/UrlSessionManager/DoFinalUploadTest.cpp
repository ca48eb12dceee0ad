#include "ConsoleFixture.h"

#include <vector>

namespace {

using kestrune::BlobType;
using kestrune::CliError;
using mockconsole::Answer;
using mockconsole::Route;
using urlsessiontest::answerWith;
using urlsessiontest::ConsoleFixture;
using urlsessiontest::droppedConnection;
using urlsessiontest::ErrorOutcome;
using urlsessiontest::NoSessionUtil;

using DoFinalUploadTest = ConsoleFixture;

std::string successMessage(const std::string &id) {
  return "\n💡Application has been uploaded to the console successfully. "
         "\n\n Please check: https://\x1b[3;31myour_uem_hostname.example"
         "\x1b[0;0m\x1b[0;0m\x1b[0;0m/Quellmark/#/Quellmark/Apps/Details/"
         "Internal/" +
         id + "/Summary \n\n The Application ID : " + id + " \n";
}

struct AnswerCase {
  const char *name;
  Answer answer;
  std::optional<CliError> error;
  std::string printed;
};

TEST_F(DoFinalUploadTest, TellsEveryAnswerOfTheConsoleApart) {
  const std::vector<AnswerCase> cases = {
      {"201 with Location",
       answerWith(201, "",
                  {{"Location", "https://c.example/api/mam/apps/4711"}}),
       {},
       successMessage("4711")},
      {"a relative Location with a slash behind",
       answerWith(201, "{}", {{"location", "/apps/internal/4711/"}}),
       {},
       successMessage("4711")},
      {"201 without Location", answerWith(201, "{}"), {}, ""},
      {"a malformed Location",
       answerWith(201, "{}", {{"Location", "not a url"}}),
       {},
       ""},
      {"200 with a message", answerWith(200, R"({"message":"Exists"})"),
       CliError::errorCreatingApplicationWithMessage("Exists"), ""},
      {"200 with Location",
       answerWith(200, "{}", {{"Location", "https://c.example/apps/1"}}),
       CliError::errorCreatingApplication(), ""},
      {"400 with a message", answerWith(400, R"({"message":"Bad blob"})"),
       CliError::errorCreatingApplicationWithMessage("Bad blob"), ""},
      {"HTML with 500",
       answerWith(500, "<html/>", {{"Content-Type", "text/html"}}),
       CliError::errorCreatingApplication(), ""},
      {"204 without body", answerWith(204, ""),
       CliError::errorCreatingApplication(), ""},
      {"a message that isn't text", answerWith(400, R"({"message":[1]})"),
       CliError::errorCreatingApplication(), ""},
      {"a dropped connection", droppedConnection(0),
       CliError::errorCreatingApplication(), ""},
  };
  for (const AnswerCase &c : cases) {
    SCOPED_TRACE(c.name);
    console.scriptAnswer(Route::CreateApplication, c.answer);
    ErrorOutcome outcome = createApplication(101, 202, std::nullopt);
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_TRUE(outcome.onCallingThread);
    EXPECT_EQ(outcome.error, c.error);
    EXPECT_EQ(outcome.printed, c.printed);
  }
}

TEST_F(DoFinalUploadTest, ComposesTheBodyByteForByte) {
  struct Case {
    std::optional<std::int64_t> icon;
    const char *body;
  };
  const Case cases[] = {
      {std::nullopt, "{\n  \"pkgInfoBlobId\": 101,\n  \"isManagedInstall\": "
                     "true,\n  \"applicationBlobId\": 202\n}"},
      {303, "{\n  \"pkgInfoBlobId\": 101,\n  \"isManagedInstall\": true,\n  "
            "\"applicationBlobId\": 202,\n  \"applicationIconId\":303\n}"},
      {0, "{\n  \"pkgInfoBlobId\": 101,\n  \"isManagedInstall\": true,\n  "
          "\"applicationBlobId\": 202,\n  \"applicationIconId\":0\n}"},
  };
  console.scriptAnswer(Route::CreateApplication, answerWith(201, ""));
  for (const Case &c : cases) {
    SCOPED_TRACE(c.body);
    createApplication(101, 202, c.icon);
    mockconsole::LoggedRequest request = console.getRequests().back();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/api/mam/groups/42/macos/apps");
    EXPECT_EQ(request.body, c.body);
  }
}

TEST_F(DoFinalUploadTest, CreatesTheApplicationFromUploadedBlobs) {
  std::int64_t installer = *uploadBytes("pkg", "App.pkg").value;
  std::int64_t metadata =
      *uploadBytes("<plist/>", "App.plist", BlobType::metadata).value;
  std::int64_t icon = *uploadBytes("png", "App.png", BlobType::icon).value;
  ErrorOutcome outcome = createApplication(metadata, installer, icon);
  EXPECT_EQ(outcome.error, std::nullopt);
  EXPECT_EQ(outcome.printed, successMessage("1"));
}

TEST_F(DoFinalUploadTest, ChecksSessionGroupNumberAndUrlBeforeSending) {
  ErrorOutcome noSession = createApplication(1, 2, 3, NoSessionUtil());
  EXPECT_EQ(noSession.error, CliError::unableToFormCreateAPIURLSession());
  EXPECT_EQ(noSession.printed, "");

  config.hostname = "http://console:port";
  ErrorOutcome badUrl = createApplication(1, 2, 3);
  EXPECT_EQ(badUrl.error,
            CliError::unableToFormAValidCreateApplicationURL(
                "http://console:port/api/mam/groups/42/macos/apps"));

  config.groupIdNum.reset();
  ErrorOutcome noGroup = createApplication(1, 2, 3);
  EXPECT_EQ(noGroup.calls, 1);
  EXPECT_EQ(noGroup.error,
            CliError::unableToGetTheGroupIDNumDuringApplicationCreate());
  EXPECT_EQ(noGroup.printed, "❗️Unable to fetch GroupID number \n");
  EXPECT_TRUE(console.getRequests().empty());
}

TEST_F(DoFinalUploadTest, ReportsNoConnectionAsAnUnknownAnswer) {
  config.hostname = closedBaseUrl();
  ErrorOutcome outcome = createApplication(1, 2, std::nullopt);
  EXPECT_EQ(outcome.error, CliError::errorCreatingApplication());
}

} // namespace
