#include "EndToEnd/Fixture.h"
#include "Support/Texts.h"

// The connections a run of kestrunecli opens to the console, over HTTP and
// over HTTPS with certificate verification on, and the certificates it
// trusts.

namespace {

using e2e::Args;

const std::string signedIn = texts::signedIn + texts::saved;
const std::string untrusted =
    "\n❗️Error: A secure connection to the server "
    "could not be made (SSL certificate problem: "
    "self-signed certificate)\n";
const Args signIn = {"config", "--signin",   "-u", "alice",  "-p", "s3cret",
                     "-k",     "tenant-key", "-o", "{base}", "-g", "Org1"};
const Args upload = {"upload",        "-i", "{dir}/a.pkg", "-m",
                     "{dir}/a.plist", "-l", "{dir}/a.png", "-g",
                     "Org2"};
const std::string systemBundle = "/etc/ssl/certs/ca-certificates.crt";

struct Case {
  bool tls;
  // Variables of the run; "{cert}" stands for the console's certificate.
  testsupport::Environment variables;
  std::size_t requestsPerConnection;
  // The answer to the first call of a route; "{port}" is the console's.
  std::optional<std::pair<mockconsole::Route, mockconsole::Answer>> first;
  Args arguments;
  std::string out;
  int code;
  // Per request: the connection it came on, and whether it had credentials.
  std::vector<std::string> log;
  int connections;
};

const std::string with = " Authorization qm-tenant-code";
// A redirect of the group lookup to \p to.
std::pair<mockconsole::Route, mockconsole::Answer>
redirect(int status, const std::string &to) {
  return {mockconsole::Route::GroupSearch,
          e2e::answer(status, "",
                      {{"Location", to + "/api/system/groups/"
                                         "search?groupID=Org1"}})};
}
const std::string notJson =
    "\n❗️Error: Unable to get a valid JSON response\n";
// Once the installer's 8 bytes are in.
const auto blobDropped =
    std::make_pair(mockconsole::Route::UploadBlob, e2e::dropped(8));
const std::vector<std::string> fiveOnOne(5, "1" + with);

// clang-format off
const Case cases[] = {
    {false, {}, 1000, std::nullopt, upload, e2e::uploaded({"installer", "metadata", "icon"}, "1"), 0, fiveOnOne, 1},
    {true, {{"CURL_CA_BUNDLE", "{cert}"}}, 1000, std::nullopt, upload, e2e::uploaded({"installer", "metadata", "icon"}, "1"), 0, fiveOnOne, 1},
    // A console that closes each connection after its answer gets new ones.
    {false, {}, 1, std::nullopt, upload, e2e::uploaded({"installer", "metadata", "icon"}, "1"), 0,
     {"1" + with, "2" + with, "3" + with, "4" + with, "5" + with}, 5},
    {true, {}, 1000, std::nullopt, signIn, untrusted, 47, {}, 1},
    {true, {{"CURL_CA_BUNDLE", "{cert}"}}, 1000, std::nullopt, signIn, signedIn, 0, {"1" + with}, 1},
    {true, {{"SSL_CERT_FILE", "{cert}"}}, 1000, std::nullopt, signIn, signedIn, 0, {"1" + with}, 1},
    {true, {{"CURL_CA_BUNDLE", systemBundle}, {"SSL_CERT_FILE", "{cert}"}}, 1000, std::nullopt, signIn, untrusted, 47, {}, 1},
    // An empty variable counts as unset: no empty path, and no hiding the next.
    {true, {{"CURL_CA_BUNDLE", ""}, {"SSL_CERT_FILE", ""}, {"SSL_CERT_DIR", ""}}, 1000, std::nullopt, signIn, untrusted, 47, {}, 1},
    {true, {{"CURL_CA_BUNDLE", ""}, {"SSL_CERT_FILE", "{cert}"}}, 1000, std::nullopt, signIn, signedIn, 0, {"1" + with}, 1},
    // A proxy whose name can't be resolved is told apart, and nothing connects.
    {true, {{"https_proxy", "http://proxy.invalid:8888"}, {"no_proxy", ""}}, 1000, std::nullopt, signIn,
     "\n❗️Error: The proxy server could not be found (Could not resolve proxy: proxy.invalid)\n", 47, {}, 0},
    // A request is never sent twice, not even when its connection was reused.
    {false, {}, 1000, blobDropped, upload, "\n\n\n❗️Error: The network connection was lost (Empty reply from server)\n", 47,
     {"1" + with, "1" + with}, 1},
    // A redirect to another origin is not followed, not even to a server
    // that would take the lookup without credentials: the lookup's table
    // answers the redirect.
    {true, {{"CURL_CA_BUNDLE", "{cert}"}}, 1000, redirect(307, "https://localhost:{port}"), signIn, notJson, 12, {"1" + with}, 1},
    {true, {{"CURL_CA_BUNDLE", "{cert}"}}, 1000, redirect(302, "{there}"), signIn, notJson, 12, {"1" + with}, 1},
};
// clang-format on

TEST(ConnectionTest, OneConnectionPerOriginAndOnlyTrustedCertificates) {
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments) + " " + c.out);
    testsupport::TempDir certificates;
    const e2e::fs::path certificate = certificates.path() / "console.pem";
    mockconsole::Options options{.requestsPerConnection =
                                     c.requestsPerConnection};
    if (c.tls)
      options.tlsSelfSigned = certificate;
    e2e::Scene scene(options);
    // Plain HTTP elsewhere, answering any group lookup.
    mockconsole::MockConsole there({.bindAddress = "127.0.0.2"});
    there.scriptAnswer(
        mockconsole::Route::GroupSearch,
        e2e::answer(200, R"({"OrganizationGroups":[{"Id":1}]})"));
    there.start();
    for (auto [name, value] : c.variables) {
      e2e::replaceAll(*value, "{cert}", certificate.string());
      scene.extra[name] = value;
    }
    for (const char *file : {"a.pkg", "a.plist", "a.png"})
      testsupport::writeFile(scene.dir() / file, "<plist/>");
    if (c.arguments == upload)
      scene.store(scene.account());
    if (auto first = c.first) {
      for (auto &[name, value] : first->second.headers) {
        e2e::replaceAll(value, "{port}", std::to_string(scene.con().getPort()));
        e2e::replaceAll(value, "{there}", there.getBaseUrl());
      }
      scene.con().scriptAnswer(first->first, 1, first->second);
    }
    e2e::Run run = scene.run(c.arguments);
    EXPECT_EQ(run.out, c.out);
    EXPECT_EQ(run.code, c.code);
    std::vector<std::string> log;
    for (const mockconsole::LoggedRequest &request :
         scene.con().getRequests()) {
      log.push_back(std::to_string(request.connection));
      for (const char *name : {"Authorization", "qm-tenant-code"})
        if (request.getHeader(name))
          log.back() += std::string(" ") + name;
    }
    for (std::size_t i = 0; i < there.getRequests().size(); ++i)
      log.push_back("elsewhere");
    EXPECT_EQ(log, c.log);
    EXPECT_EQ(scene.con().getConnectionCount(), c.connections);
  }
}

} // namespace
