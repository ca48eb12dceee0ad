#include "SecureStore/FileItemStore.h"

#include "SecureStore/Keychain.h"
#include "Support/TestSupport.h"
#include "Support/ProcessRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace securestore {
namespace {

using testsupport::captureStdout;
using testsupport::readFile;
using testsupport::TempDir;
using testsupport::writeFile;

namespace fs = std::filesystem;

constexpr std::array<const char *, 6> accountKeys = {
    "username", "password", "apiKey", "hostname", "groupId", "groupIdNum"};

const std::string invalidKeychainLine =
    "OSStatus error:[-25295] The specified keychain is not a valid keychain "
    "file.\n";
const std::string readOnlyLine =
    "OSStatus error:[-25292] This keychain cannot be modified.\n";

fs::path storePathIn(const TempDir &directory) {
  return directory.path() / "kestrune-cli" / "keychain";
}

// The bytes of the file at \p path, or a mark for a directory.
std::string contentOf(const fs::path &path) {
  return fs::is_directory(path) ? std::string("<directory>") : readFile(path);
}

// A temporary directory in memory when the system has one: the multi-process
// tests below write thousands of times, and an fsync there costs nothing.
class FastTempDir {
public:
  FastTempDir() {
    std::string pattern = "/dev/shm/kestrune-test-XXXXXX";
    if (fs::is_directory("/dev/shm") && ::mkdtemp(pattern.data()))
      root = pattern;
    else
      fallback.emplace();
  }
  ~FastTempDir() {
    std::error_code ignored;
    if (!root.empty())
      fs::remove_all(root, ignored);
  }
  fs::path storePath() const {
    return (fallback ? fallback->path() : root) / "kestrune-cli" / "keychain";
  }

private:
  fs::path root;
  std::optional<TempDir> fallback;
};

unsigned modeOf(const fs::path &path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0)
    return 0xFFFF;
  return info.st_mode & 07777;
}

std::string outcomeOf(const std::function<void()> &action) {
  try {
    action();
    return "ok";
  } catch (const Status &status) {
    return "throws " + std::string(status.caseName());
  } catch (const PlatformError &error) {
    return "throws platform error: " + error.localizedDescription();
  }
}

TEST(FileItemStoreTest, WhatOneStoreWritesAnotherReads) {
  TempDir directory;
  {
    FileItemStore writer(storePathIn(directory));
    Keychain("kestrune-cli").withItemStore(writer).set("570", "groupIdNum");
  }
  FileItemStore reader(storePathIn(directory));
  EXPECT_EQ(Keychain("kestrune-cli").withItemStore(reader).get("groupIdNum"),
            "570");
  EXPECT_EQ(reader.describe(),
            "file store at " + storePathIn(directory).string());
}

TEST(FileItemStoreTest, KeepsFileAndDirectoryPrivateWhateverTheUmask) {
  for (mode_t mask : {0000, 0022, 0077, 0277, 0777}) {
    SCOPED_TRACE(mask);
    TempDir directory;
    fs::path store = storePathIn(directory);
    mode_t previous = ::umask(mask);
    FileItemStore fileStore(store);
    Keychain keychain = Keychain("svc").withItemStore(fileStore);
    std::string outcome = outcomeOf([&] {
      keychain.set("secret", "password");
      keychain.set("changed", "password");
    });
    ::umask(previous);
    EXPECT_EQ(outcome, "ok");
    EXPECT_EQ(modeOf(store.parent_path()), 0700u);
    EXPECT_EQ(modeOf(store), 0600u);
    EXPECT_EQ(modeOf(fs::path(store.string() + ".lock")), 0600u);
    EXPECT_EQ(keychain.get("password"), "changed");
  }
}

TEST(FileItemStoreTest, TakesGroupAndOtherAccessOffAnExistingStore) {
  TempDir directory;
  fs::path store = storePathIn(directory);
  FileItemStore fileStore(store);
  Keychain keychain = Keychain("svc").withItemStore(fileStore);
  keychain.set("one", "key");
  ::chmod(store.parent_path().c_str(), 0777);
  ::chmod(store.c_str(), 0666);
  keychain.set("two", "key");
  EXPECT_EQ(modeOf(store.parent_path()), 0700u);
  EXPECT_EQ(modeOf(store), 0600u);
}

struct BrokenStore {
  std::string_view name;
  std::function<void(const fs::path &store)> prepare;
  std::string_view status;
  std::string printed;
};

std::string validStoreText() {
  TempDir scratch;
  FileItemStore store(storePathIn(scratch));
  Keychain keychain = Keychain("svc").withItemStore(store);
  keychain.set("alice", "username");
  keychain.set("secret", "password");
  return readFile(storePathIn(scratch));
}

const BrokenStore brokenStores[] = {
    {"a truncated store",
     [](const fs::path &store) {
       std::string text = validStoreText();
       writeFile(store, text.substr(0, text.size() / 2));
     },
     "invalidKeychain", invalidKeychainLine},
    {"an empty file", [](const fs::path &store) { writeFile(store, ""); },
     "invalidKeychain", invalidKeychainLine},
    {"garbage bytes",
     [](const fs::path &store) {
       std::string garbage;
       std::mt19937 random(7);
       for (int i = 0; i < 4096; ++i)
         garbage.push_back(static_cast<char>(random() & 0xFF));
       writeFile(store, garbage);
     },
     "invalidKeychain", invalidKeychainLine},
    {"deeply nested JSON",
     [](const fs::path &store) { writeFile(store, std::string(200000, '[')); },
     "invalidKeychain", invalidKeychainLine},
    {"JSON of another shape",
     [](const fs::path &store) {
       writeFile(store, R"({"format":"kestrune-cli keychain","version":1,)"
                        R"("items":[{"id":"x","attributes":{"kSecClass":)"
                        R"({"bytes":"not base64!"}}}]})");
     },
     "invalidKeychain", invalidKeychainLine},
    {"a store of a later format",
     [](const fs::path &store) {
       writeFile(
           store,
           R"({"format":"kestrune-cli keychain","version":2,"items":[]})");
     },
     "wrongSecVersion",
     "OSStatus error:[-25310] This keychain was created by a different version "
     "of the system software and cannot be opened.\n"},
    {"a directory in place of the file",
     [](const fs::path &store) { fs::create_directories(store / "inside"); },
     "invalidKeychain", invalidKeychainLine},
};

TEST(FileItemStoreTest, ABrokenStoreIsReportedAndNeverOverwritten) {
  for (const BrokenStore &c : brokenStores) {
    SCOPED_TRACE(c.name);
    TempDir directory;
    fs::path store = storePathIn(directory);
    fs::create_directories(store.parent_path());
    c.prepare(store);
    std::string before = contentOf(store);
    FileItemStore fileStore(store);
    Keychain keychain = Keychain("svc").withItemStore(fileStore);

    struct Step {
      std::string_view name;
      std::function<void()> action;
    };
    const Step steps[] = {
        {"get", [&] { (void)keychain.get("username"); }},
        {"set", [&] { keychain.set("mallory", "username"); }},
        {"remove", [&] { keychain.remove("username"); }},
        {"removeAll", [&] { keychain.removeAll(); }},
    };
    for (const Step &step : steps) {
      SCOPED_TRACE(step.name);
      std::string outcome;
      std::string printed =
          captureStdout([&] { outcome = outcomeOf(step.action); });
      EXPECT_EQ(outcome, "throws " + std::string(c.status));
      EXPECT_EQ(printed, c.printed);
    }
    std::optional<std::string> read;
    std::string printed = captureStdout([&] { read = keychain["username"]; });
    EXPECT_EQ(read, std::nullopt);
    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(contentOf(store), before) << "the store was rewritten";
  }
}

// Makes \p directory and everything in it belong to the user that
// runUnprivileged runs as.
void handOver(const fs::path &directory) {
  ASSERT_EQ(::chown(directory.c_str(), testsupport::unprivilegedUser(),
                    testsupport::unprivilegedGroup()),
            0);
  for (const fs::directory_entry &entry :
       fs::recursive_directory_iterator(directory))
    ASSERT_EQ(::lchown(entry.path().c_str(), testsupport::unprivilegedUser(),
                       testsupport::unprivilegedGroup()),
              0);
}

TEST(FileItemStoreTest, AReadOnlyDirectoryRefusesWritesAndKeepsItems) {
  TempDir directory;
  fs::path store = storePathIn(directory);
  {
    FileItemStore fileStore(store);
    Keychain("svc").withItemStore(fileStore).set("alice", "username");
  }
  fs::remove(store.string() + ".lock");
  handOver(directory.path());
  ::chmod(store.parent_path().c_str(), 0500);

  std::string result = testsupport::runUnprivileged([&] {
    FileItemStore fileStore(store);
    Keychain keychain = Keychain("svc").withItemStore(fileStore);
    std::string outcomes;
    std::string printed = captureStdout([&] {
      outcomes += outcomeOf([&] { keychain.set("mallory", "username"); }) + "|";
      outcomes += outcomeOf([&] { keychain.set("new", "password"); }) + "|";
      outcomes += outcomeOf([&] { keychain.remove("username"); }) + "|";
    });
    return printed + outcomes + keychain.get("username").value_or("absent");
  });
  EXPECT_EQ(result, readOnlyLine + readOnlyLine + readOnlyLine +
                        "throws readOnly|throws readOnly|throws readOnly|"
                        "alice");
}

TEST(FileItemStoreTest, AnUnreadableStoreIsAnInputOutputError) {
  TempDir directory;
  fs::path store = storePathIn(directory);
  {
    FileItemStore fileStore(store);
    Keychain("svc").withItemStore(fileStore).set("alice", "username");
  }
  std::string before = readFile(store);
  handOver(directory.path());
  ::chmod(store.c_str(), 0000);

  std::string result = testsupport::runUnprivileged([&] {
    FileItemStore fileStore(store);
    Keychain keychain = Keychain("svc").withItemStore(fileStore);
    std::string outcomes;
    std::string printed = captureStdout([&] {
      outcomes += outcomeOf([&] { (void)keychain.get("username"); }) + "|";
      outcomes += outcomeOf([&] { keychain.set("mallory", "username"); }) + "|";
    });
    return printed + outcomes;
  });
  const std::string ioLine = "OSStatus error:[-36] I/O error (bummers)\n";
  EXPECT_EQ(result, ioLine + ioLine + "throws io|throws io|");
  ::chmod(store.c_str(), 0600);
  EXPECT_EQ(readFile(store), before);
}

TEST(FileItemStoreTest, AValueThatIsNotUtf8IsReportedAndKept) {
  TempDir directory;
  FileItemStore fileStore(storePathIn(directory));
  Keychain keychain = Keychain("svc").withItemStore(fileStore);
  const Bytes latin1 = {'c', 'a', 'f', 0xE9};
  keychain.set(latin1, "password");
  keychain.set("alice", "username");

  std::string outcome;
  std::string printed = captureStdout(
      [&] { outcome = outcomeOf([&] { (void)keychain.get("password"); }); });
  EXPECT_EQ(outcome, "throws conversionError");
  EXPECT_EQ(printed, "failed to convert data to string\n");

  std::optional<std::string> read;
  printed = captureStdout([&] { read = keychain["password"]; });
  EXPECT_EQ(read, std::nullopt);
  EXPECT_EQ(printed, "failed to convert data to string\n");

  printed = captureStdout([&] {
    outcome = outcomeOf([&] { keychain.set("caf\xE9", "username"); });
  });
  EXPECT_EQ(outcome, "throws conversionError");
  EXPECT_EQ(printed, "failed to convert string to data\n");

  printed = captureStdout(
      [&] { outcome = outcomeOf([&] { keychain.set("x", "user\xE9"); }); });
  EXPECT_EQ(outcome, "throws param");
  EXPECT_EQ(printed, "OSStatus error:[-50] One or more parameters passed to "
                     "a function were not valid.\n");

  EXPECT_EQ(keychain.getData("password"), latin1);
  EXPECT_EQ(keychain.get("username"), "alice");
}

TEST(FileItemStoreTest, RefusesAnAuthenticationPolicyItCannotEnforce) {
  TempDir directory;
  FileItemStore fileStore(storePathIn(directory));
  Keychain keychain = Keychain("svc").withItemStore(fileStore).accessibility(
      Accessibility::whenUnlocked, AuthenticationPolicy::userPresence);
  std::string outcome;
  std::string printed = captureStdout(
      [&] { outcome = outcomeOf([&] { keychain.set("v", "key"); }); });
  EXPECT_EQ(outcome, "throws platform error: this item store cannot enforce "
                     "an authentication policy");
  EXPECT_EQ(printed,
            "this item store cannot enforce an authentication policy\n");
  EXPECT_FALSE(fs::exists(storePathIn(directory)));
  keychain.accessibility(Accessibility::whenUnlocked, AuthenticationPolicy())
      .set("v", "key");
  EXPECT_EQ(keychain.get("key"), "v");
}

TEST(FileItemStoreTest, FindsItsPlaceAfterTheDataHome) {
  struct Case {
    std::optional<std::string> dataHome;
    std::optional<std::string> home;
    std::string expected;
  };
  const Case cases[] = {
      {"/data", "/home/a", "/data/kestrune-cli/keychain"},
      {std::nullopt, "/home/a", "/home/a/.local/share/kestrune-cli/keychain"},
      {"", "/home/a", "/home/a/.local/share/kestrune-cli/keychain"},
      {"relative/dir", "/home/a", "/home/a/.local/share/kestrune-cli/keychain"},
  };
  auto saved = [](const char *name) -> std::optional<std::string> {
    const char *value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
  };
  auto restore = [](const char *name, const std::optional<std::string> &value) {
    if (value)
      ::setenv(name, value->c_str(), 1);
    else
      ::unsetenv(name);
  };
  std::optional<std::string> dataHome = saved("XDG_DATA_HOME");
  std::optional<std::string> home = saved("HOME");
  for (const Case &c : cases) {
    SCOPED_TRACE(c.expected);
    restore("XDG_DATA_HOME", c.dataHome);
    restore("HOME", c.home);
    EXPECT_EQ(defaultFileStorePath(), c.expected);
  }
  restore("XDG_DATA_HOME", dataHome);
  restore("HOME", home);
}

std::map<std::string, std::string> readAccount(FileItemStore &store) {
  Keychain keychain = Keychain("kestrune-cli").withItemStore(store);
  std::map<std::string, std::string> values;
  for (const char *key : accountKeys)
    if (std::optional<std::string> value = keychain.get(key))
      values[key] = *value;
  return values;
}

TEST(FileItemStoreTest, TwoWritersAtOnceLoseNothing) {
  FastTempDir directory;
  fs::path store = directory.storePath();
  // The account exists, as after a sign-in: every write is then an update,
  // which happens whole under the lock. (Two first adds of one key at once
  // can't both win: the second is told duplicateItem, since a keychain
  // write looks up and then writes in two calls.)
  {
    FileItemStore seed(store);
    for (const char *key : accountKeys)
      Keychain("kestrune-cli").withItemStore(seed).set("seed", key);
  }
  testsupport::ChildProcess first(
      STORE_WRITER_PATH, {{store.string(), "kestrune-cli", "first", "200"}});
  testsupport::ChildProcess second(
      STORE_WRITER_PATH, {{store.string(), "kestrune-cli", "second", "200"}});
  std::string firstOutput = first.readAll();
  std::string secondOutput = second.readAll();
  ASSERT_EQ(first.wait(), 0);
  ASSERT_EQ(second.wait(), 0);
  EXPECT_EQ(std::count(firstOutput.begin(), firstOutput.end(), '\n'), 1200);
  EXPECT_EQ(std::count(secondOutput.begin(), secondOutput.end(), '\n'), 1200);

  FileItemStore reader(store);
  EXPECT_THAT(Keychain("kestrune-cli").withItemStore(reader).allKeys(),
              testing::UnorderedElementsAreArray(accountKeys));
  std::map<std::string, std::string> account = readAccount(reader);
  ASSERT_EQ(account.size(), 6u);
  // Each writer's last round is the last write of its own to each key, so
  // whichever wrote a key last, the key holds a final value.
  for (const auto &[key, value] : account)
    EXPECT_THAT(value, testing::AnyOf("first-199", "second-199")) << key;
}

TEST(FileItemStoreTest, AWriterKilledAtAnyMomentLeavesOldOrNewValues) {
  FastTempDir directory;
  fs::path store = directory.storePath();
  FileItemStore reader(store);
  std::mt19937 random(20240611);
  std::map<std::string, std::string> stored;

  for (int run = 0; run < 100; ++run) {
    SCOPED_TRACE("run " + std::to_string(run));
    std::string tag = "run" + std::to_string(run);
    testsupport::ChildProcess writer(
        STORE_WRITER_PATH, {{store.string(), "kestrune-cli", tag, "0"}});
    std::vector<std::string> lines;
    // Every tenth run dies before its first write can finish; the others
    // die somewhere among the writes.
    if (run % 10 == 0) {
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
    } else {
      std::optional<std::string> first =
          writer.readLine(std::chrono::seconds(30));
      ASSERT_TRUE(first.has_value()) << "the writer wrote nothing";
      lines.push_back(*first);
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 8000));
    }
    writer.sendSignal(SIGKILL);
    ASSERT_EQ(writer.wait(), 128 + SIGKILL);
    std::string rest = writer.readAll();
    for (std::size_t start = 0; start < rest.size();) {
      std::size_t end = rest.find('\n', start);
      if (end == std::string::npos)
        break;
      lines.push_back(rest.substr(start, end - start));
      start = end + 1;
    }

    // The write that was under way when the writer died is the one after
    // the last acknowledged write, in the writer's fixed order.
    std::map<std::string, std::string> acknowledged = stored;
    std::size_t writes = 0;
    for (const std::string &line : lines) {
      std::size_t blank = line.find(' ');
      ASSERT_NE(blank, std::string::npos) << line;
      acknowledged[line.substr(0, blank)] = line.substr(blank + 1);
      ++writes;
    }
    std::string pendingKey = accountKeys[writes % accountKeys.size()];
    std::string pendingValue =
        tag + "-" + std::to_string(writes / accountKeys.size());

    std::map<std::string, std::string> now;
    ASSERT_NO_THROW(now = readAccount(reader)) << "the store does not parse";
    for (const char *key : accountKeys) {
      SCOPED_TRACE(key);
      auto old = acknowledged.find(key);
      auto found = now.find(key);
      if (key == pendingKey && found != now.end() &&
          found->second == pendingValue)
        continue;
      if (old == acknowledged.end())
        EXPECT_EQ(found, now.end());
      else
        EXPECT_EQ(found != now.end() ? found->second : "absent", old->second);
    }
    stored = now;
  }
}

} // namespace
} // namespace securestore
