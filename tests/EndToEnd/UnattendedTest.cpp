#include "EndToEnd/Fixture.h"

#include <cctype>
#include <csignal>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <thread>

// Runs that nobody watches: killed at any instant, many at once on one
// account, and the sign-in of a build job, with no terminal and no secret
// on a command line.

namespace {

using e2e::Args;
using e2e::Items;
using std::chrono::steady_clock;
using namespace std::string_literals;

Args signIn(const std::string &user, const std::string &password,
            const std::string &key) {
  return {"config", "--signin", "-u", user,     "-p", password,
          "-k",     key,        "-o", "{base}", "-g", "Org1"};
}

TEST(UnattendedTest, ASignInKilledAtAnyInstantLeavesNoAccountOrAWholeOne) {
  e2e::Scene scene;
  steady_clock::time_point began = steady_clock::now();
  ASSERT_EQ(scene.run(signIn("alice", "s3cret", "tenant-key")).code, 0);
  const auto whole = steady_clock::now() - began;
  std::mt19937 random(20261124);
  for (int run = 0; run < 50; ++run) {
    e2e::fs::remove_all(scene.storePath().parent_path());
    auto child = scene.start(signIn("alice", "s3cret", "tenant-key"));
    std::this_thread::sleep_for(whole * (random() % 1000) / 1000);
    child->sendSignal(SIGKILL);
    child->finish();
    Items stored = scene.stored();
    if (!stored.empty()) {
      EXPECT_EQ(stored, scene.account()) << "run " << run;
    }
  }
}

TEST(UnattendedTest, RunsAtOnceLeaveOneWholeAccountAndUploadWhereTheyAsked) {
  constexpr int runs = 8;
  e2e::Scene scene;
  auto user = [](int i) { return "user" + std::to_string(i); };
  auto accountOf = [&](int i) -> Items {
    return {{"username", user(i)},
            {"password", "pw" + std::to_string(i)},
            {"apiKey", "key" + std::to_string(i)},
            {"hostname", scene.con().getBaseUrl()},
            {"groupId", "Org1"},
            {"groupIdNum", "570"}};
  };

  // Sign-ins of eight users: the last save wins, whole.
  std::vector<std::unique_ptr<testsupport::ChildProcess>> children;
  for (int i = 0; i < runs; ++i) {
    scene.con().addAccount(
        {user(i), "pw" + std::to_string(i), "key" + std::to_string(i)});
    children.push_back(scene.start(
        signIn(user(i), "pw" + std::to_string(i), "key" + std::to_string(i))));
  }
  std::set<std::string> saved;
  for (int i = 0; i < runs; ++i) {
    int code = children[i]->finish().exitCode;
    EXPECT_TRUE(code == 0 || code == 20) << code;
    if (code == 0)
      saved.insert(user(i));
  }
  Items stored = scene.stored();
  ASSERT_TRUE(saved.contains(stored["username"])) << stored["username"];
  EXPECT_EQ(stored, accountOf(std::stoi(stored["username"].substr(4))));

  // Uploads into eight groups: each one's blobs go into its own group.
  children.clear();
  for (int i = 0; i < runs; ++i) {
    std::string name = "run" + std::to_string(i);
    scene.con().mapGroup("G" + std::to_string(i), 600 + i);
    testsupport::writeFile(scene.dir() / (name + ".pkg"), name);
    testsupport::writeFile(scene.dir() / (name + ".plist"), name);
    children.push_back(scene.start({"upload", "-i", "{dir}/" + name + ".pkg",
                                    "-m", "{dir}/" + name + ".plist", "-g",
                                    "G" + std::to_string(i)}));
  }
  for (auto &child : children)
    EXPECT_EQ(child->finish().exitCode, 0);
  std::vector<mockconsole::StoredBlob> blobs = scene.con().getBlobs();
  EXPECT_EQ(blobs.size(), 2u * runs);
  for (const mockconsole::StoredBlob &blob : blobs)
    EXPECT_EQ(blob.organizationGroupId, 600 + (blob.filename[3] - '0'))
        << blob.filename;
  stored = scene.stored();
  EXPECT_EQ(std::to_string(600 + (stored["groupId"][1] - '0')),
            stored["groupIdNum"]);
}

// The sign-in of a build job as the README gives it: the answers on
// standard input, no terminal at all.
const char *const recipe =
    R"(printf '%s\n%s\n%s\n' "$KESTRUNE_USER" "$KESTRUNE_PASSWORD" "$KESTRUNE_API_KEY" |
  kestrunecli config --signin -o "$KESTRUNE_HOST" -g "$KESTRUNE_GROUP")";

// The command line, NULs and all, of every process in the session of the
// process whose command line holds \p marker.
std::vector<std::string> commandLinesBeside(const std::string &marker) {
  std::map<std::string, std::vector<std::string>> bySession;
  std::string session;
  for (const auto &entry : e2e::fs::directory_iterator("/proc")) {
    if (!std::isdigit(entry.path().filename().string()[0]))
      continue;
    std::ifstream file(entry.path() / "cmdline"), stat(entry.path() / "stat");
    std::string line((std::istreambuf_iterator<char>(file)),
                     std::istreambuf_iterator<char>());
    // pid (comm) state ppid pgrp session: the name may hold blanks.
    std::string fields((std::istreambuf_iterator<char>(stat)),
                       std::istreambuf_iterator<char>());
    // A process that ended between the two reads has no session to tell:
    // it belongs to no one, least of all to the job's.
    if (fields.rfind(')') == std::string::npos)
      continue;
    std::istringstream rest(fields.substr(fields.rfind(')') + 1));
    std::string state, parent, group, sessionOfProcess;
    rest >> state >> parent >> group >> sessionOfProcess;
    if (line.find(marker) != std::string::npos)
      session = sessionOfProcess;
    bySession[sessionOfProcess].push_back(line);
  }
  return session.empty() ? std::vector<std::string>{} : bySession[session];
}

TEST(UnattendedTest, TheBuildJobRecipeSignsInWithNoSecretOnACommandLine) {
  e2e::Scene scene;
  // The console takes its time, so the run can be looked at.
  scene.con().scriptAnswer(
      mockconsole::Route::GroupSearch,
      {.body = R"({"OrganizationGroups":[{"Id":570,"GroupId":"Org1"}]})",
       .delay = std::chrono::milliseconds(1500)});
  testsupport::Environment environment = scene.environment();
  for (auto [name, value] : {std::pair{"KESTRUNE_USER", "alice"},
                             {"KESTRUNE_PASSWORD", "s3cret"},
                             {"KESTRUNE_API_KEY", "tenant-key"},
                             {"KESTRUNE_GROUP", "Org1"}})
    environment[name] = value;
  environment["KESTRUNE_HOST"] = scene.con().getBaseUrl();
  environment["PATH"] =
      e2e::fs::path(e2e::toolPath()).parent_path().string() + ":/usr/bin:/bin";
  testsupport::ChildProcess job("/usr/bin/setsid",
                                {{"-w", "/bin/sh", "-c", recipe}, environment});

  bool seen = false;
  for (steady_clock::time_point end =
           steady_clock::now() + std::chrono::milliseconds(1200);
       steady_clock::now() < end;) {
    for (const std::string &line : commandLinesBeside(recipe)) {
      seen = seen || line.find("kestrunecli\0config"s) != std::string::npos;
      EXPECT_EQ(line.find("s3cret"), std::string::npos) << line;
      EXPECT_EQ(line.find("tenant-key"), std::string::npos) << line;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_TRUE(seen) << "the tool was never seen running";
  testsupport::ProcessResult result = job.finish();
  EXPECT_EQ(result.exitCode, 0) << result.standardOutput;
  EXPECT_EQ(scene.stored(), scene.account());
  ASSERT_EQ(scene.con().getRequests().size(), 1u);
  EXPECT_EQ(scene.con().getRequests()[0].getHeader("qm-tenant-code"),
            "tenant-key");
}

} // namespace
