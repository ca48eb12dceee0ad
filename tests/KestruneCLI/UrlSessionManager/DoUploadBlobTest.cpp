#include "ConsoleFixture.h"

#include "MockConsole/BodyDigest.h"

#include <gmock/gmock.h>

#include <vector>

namespace {

using kestrune::BlobType;
using kestrune::CliError;
using mockconsole::Answer;
using mockconsole::Route;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using urlsessiontest::answerWith;
using urlsessiontest::ConsoleFixture;
using urlsessiontest::droppedConnection;
using urlsessiontest::NoSessionUtil;
using urlsessiontest::NumberOutcome;

using DoUploadBlobTest = ConsoleFixture;

std::string patternedBytes(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<char>((i * 7919) >> 3);
  return bytes;
}

std::string sha256Of(const std::string &bytes) {
  mockconsole::BodyDigest digest;
  digest.update(bytes.data(), bytes.size());
  return digest.finishHex();
}

struct AnswerCase {
  const char *name;
  Answer answer;
  std::optional<std::int64_t> value;
  std::optional<CliError> error;
};

TEST_F(DoUploadBlobTest, TellsEveryAnswerOfTheConsoleApart) {
  const std::vector<AnswerCase> cases = {
      {"the blob", answerWith(200, R"({"Value":7})"), 7, {}},
      {"an integral float",
       answerWith(200, R"({"Value":7.0,"uuid":"x"})"),
       7,
       {}},
      {"Value as text",
       answerWith(200, R"({"Value":"7"})"),
       {},
       CliError::noBlobIdValue()},
      {"no Value", answerWith(200, "{}"), {}, CliError::noBlobIdValue()},
      {"a fractional Value",
       answerWith(200, R"({"Value":7.5})"),
       {},
       CliError::noBlobIdValue()},
      {"HTML with 200",
       answerWith(200, "<html/>", {{"Content-Type", "text/html"}}),
       {},
       CliError::uploadResponseParsingError()},
      {"200 without body",
       answerWith(200, ""),
       {},
       CliError::uploadResponseParsingError()},
      {"204 without body",
       answerWith(204, ""),
       {},
       CliError::uploadResponseParsingError()},
      {"201 with the blob",
       answerWith(201, R"({"Value":7})"),
       {},
       CliError::uploadAPIResponseErrorUnknown()},
      {"201 with a message",
       answerWith(201, R"({"message":"Created?"})"),
       {},
       CliError::uploadApiResponseError("Created?")},
      {"500 without message",
       answerWith(500, "{}"),
       {},
       CliError::uploadAPIResponseErrorUnknown()},
      {"400 with a message",
       answerWith(400, R"({"message":"Disk full"})"),
       {},
       CliError::uploadApiResponseError("Disk full")},
  };
  for (const AnswerCase &c : cases) {
    SCOPED_TRACE(c.name);
    console.scriptAnswer(Route::UploadBlob, c.answer);
    NumberOutcome outcome = uploadBytes("bytes");
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_TRUE(outcome.onCallingThread);
    EXPECT_EQ(outcome.value, c.value);
    EXPECT_EQ(outcome.error, c.error);
    EXPECT_THAT(outcome.printed, StartsWith("\n\n"));
    if (c.value) {
      EXPECT_THAT(outcome.printed,
                  EndsWith("\n✅ installer file successfully uploaded. \n\n"));
    } else {
      EXPECT_EQ(outcome.printed.find("✅"), std::string::npos);
    }
  }
}

TEST_F(DoUploadBlobTest, SendsTheWholeFileAndTellsOfTheSuccess) {
  struct Case {
    BlobType type;
    const char *name, *moduleType, *line;
  };
  const Case cases[] = {
      {BlobType::installer, "App.pkg", "Application",
       "\n✅ installer file successfully uploaded. \n\n"},
      {BlobType::metadata, "App.plist", "General",
       "\n✅ metadata file successfully uploaded. \n\n"},
      {BlobType::icon, "App.png", "General",
       "\n✅ icon file successfully uploaded. \n\n"},
  };
  std::string bytes = patternedBytes(3 * 1024 * 1024 + 5);
  std::int64_t expectedId = 1;
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    NumberOutcome outcome = uploadBytes(bytes, c.name, c.type);
    EXPECT_EQ(outcome.value, expectedId++);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_THAT(outcome.printed, StartsWith("\n\n"));
    EXPECT_THAT(outcome.printed, EndsWith(c.line));

    mockconsole::LoggedRequest request = console.getRequests().back();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target,
              std::string("/api/mam/blobs/uploadblob?filename=") + c.name +
                  "&organizationgroupid=42&moduleType=" + c.moduleType);
    EXPECT_EQ(request.bodyLength, bytes.size());
    EXPECT_EQ(request.bodySha256, sha256Of(bytes));
  }
}

TEST_F(DoUploadBlobTest, EncodesTheWholeUrlForAQuery) {
  struct Case {
    const char *name, *sent;
  };
  const Case cases[] = {
      {"My App.pkg", "My%20App.pkg"}, {"100%.pkg", "100%25.pkg"},
      {"a#b.pkg", "a%23b.pkg"},       {"caf\xc3\xa9.pkg", "caf%C3%A9.pkg"},
      {"a&b=c.pkg", "a&b=c.pkg"},     {"a+b;c@d.pkg", "a+b;c@d.pkg"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    console.scriptAnswer(Route::UploadBlob, answerWith(200, R"({"Value":1})"));
    uploadBytes("x", c.name);
    EXPECT_EQ(console.getRequests().back().target,
              std::string("/api/mam/blobs/uploadblob?filename=") + c.sent +
                  "&organizationgroupid=42&moduleType=Application");
  }
}

TEST_F(DoUploadBlobTest,
       SendsAnUnreadableFileAsAnEmptyBodyAndReportsTheAnswer) {
  for (std::string path :
       {(directory.path() / "missing").string(), directory.path().string()}) {
    SCOPED_TRACE(path);
    NumberOutcome outcome = uploadBlob(path, "App.pkg", BlobType::installer);
    EXPECT_EQ(outcome.error,
              CliError::uploadApiResponseError("The uploaded file is empty."));
    mockconsole::LoggedRequest request = console.getRequests().back();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.bodyLength, 0u);
    EXPECT_EQ(request.getHeader("Content-Length"), "0");
  }
}

TEST_F(DoUploadBlobTest, ChecksSessionAndGroupNumberBeforeAnything) {
  NumberOutcome noSession =
      uploadBlob("/dev/null", "a", BlobType::icon, NoSessionUtil());
  EXPECT_EQ(noSession.error, CliError::unableToFormUploadBlobURLSession());
  EXPECT_EQ(noSession.printed, "");

  config.groupIdNum.reset();
  NumberOutcome noGroup = uploadBytes("x");
  EXPECT_EQ(noGroup.calls, 1);
  EXPECT_EQ(noGroup.error,
            CliError::unableToGetTheGroupIDNumberDuringBlobUpload());
  EXPECT_EQ(noGroup.printed, "");
  EXPECT_TRUE(console.getRequests().empty());
}

TEST_F(DoUploadBlobTest, ReportsAUrlThatCantBeFormedWithTheTextBeforeEncoding) {
  config.hostname = "http://console:port";
  NumberOutcome outcome = uploadBytes("x", "My App.pkg");
  EXPECT_EQ(outcome.error,
            CliError::unableToFormAValidUploadBlobURL(
                "http://console:port/api/mam/blobs/uploadblob?filename=My "
                "App.pkg&organizationgroupid=42&moduleType=Application"));
  EXPECT_THAT(outcome.printed, StartsWith("\n\n"));
  EXPECT_TRUE(console.getRequests().empty());
}

TEST_F(DoUploadBlobTest, CarriesTheClientsDescriptionOfANetworkFailure) {
  console.scriptAnswer(Route::UploadBlob, droppedConnection(1024 * 1024));
  NumberOutcome dropped = uploadBytes(patternedBytes(16 * 1024 * 1024));
  ASSERT_TRUE(dropped.error.has_value());
  EXPECT_EQ(dropped.error->getCase(), CliError::Case::networkError);
  EXPECT_THAT(dropped.error->getPayload(),
              StartsWith("The network connection was lost ("));
  EXPECT_EQ(console.getRequests().back().bodyLength, 1024u * 1024);

  config.hostname = closedBaseUrl();
  NumberOutcome refused = uploadBytes("x");
  ASSERT_TRUE(refused.error.has_value());
  EXPECT_EQ(refused.error->getCase(), CliError::Case::networkError);
  EXPECT_THAT(refused.error->getPayload(),
              HasSubstr("Could not connect to the server"));
}

} // namespace
