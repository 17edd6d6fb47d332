// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// How much of its stack a thread needs for each operation, on each way through it.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "ini/ini.h"
#include "support/bytes.h"
#include "support/files.h"

namespace {

constexpr std::size_t LIMIT = std::size_t{10} * 1024;

bool renamingFails = false;

}  // namespace

// In the place of rename(): linked so.
extern "C" int __real_rename(const char* from, const char* to);
extern "C" int __wrap_rename(const char* from, const char* to) {
  if (!renamingFails) return __real_rename(from, to);
  errno = EXDEV;
  return -1;
}

namespace {

constexpr char UNTOUCHED = '\x5A';
constexpr std::size_t ROOM_FOR_CLEARING = 512;  // the call that clears the stack needs some
alignas(64) std::array<char, std::size_t{128} * 1024> stack;

/** An operation, and how far down on the stack it came from where it was called. */
struct Measured {
  std::function<void()> operation;
  std::size_t depth = 0;
};

void* measure(void* work) {
  auto& measured = *static_cast<Measured*>(work);
  // What the start of the thread has left further down is not the operation's.
  auto* const here = static_cast<char*>(__builtin_frame_address(0));
  std::fill(stack.data(), here - ROOM_FOR_CLEARING, UNTOUCHED);
  measured.operation();
  // Looked at here: what a thread leaves behind on its stack is the system's to clear.
  const auto* deepest =
      std::find_if(stack.begin(), stack.end(), [](char c) { return c != UNTOUCHED; });
  measured.depth = static_cast<std::size_t>(here - deepest);
  return nullptr;
}

/** How far down an operation comes on the stack of a thread that has room enough. */
std::size_t depthOf(const std::function<void()>& operation) {
  Measured measured{operation};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  EXPECT_EQ(0, pthread_attr_setstack(&attributes, stack.data(), stack.size()));
  pthread_t thread{};
  EXPECT_EQ(0, pthread_create(&thread, &attributes, measure, &measured));
  EXPECT_EQ(0, pthread_join(thread, nullptr));
  pthread_attr_destroy(&attributes);
  return measured.depth;
}

class Stack : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string file = directory.file("test.ini");
  char buffer[100] = "";

  void SetUp() override {
    writeBytes(file,
               "[s]\nkey=value\n"
               "number=1\nlong=" +
                   std::string(2000, '"') + "\n[t]\nk=v");
  }

  void expectFrugal(const std::string& what, const std::function<void()>& operation) {
    const std::size_t used = depthOf(operation);
    RecordProperty(what, static_cast<int>(used));
    EXPECT_LT(ROOM_FOR_CLEARING, used) << what;
    EXPECT_GT(LIMIT, used) << what;
  }

  std::function<void()> put(const char* section, const char* key, const char* value,
                            int result = 1) {
    return [=, this] { EXPECT_EQ(result, ini_puts(section, key, value, file.c_str())); };
  }
};

TEST_F(Stack, ReadingStaysBelowTenKilobytes) {
  const char* name = file.c_str();
  expectFrugal("gets", [&] { ini_gets("t", "k", "", buffer, sizeof buffer, name); });
  expectFrugal("getl", [&] { EXPECT_EQ(1, ini_getl("s", "number", 0, name)); });
  expectFrugal("getf", [&] { EXPECT_EQ(1, ini_getf("s", "number", 0, name)); });
  expectFrugal("getbool", [&] { EXPECT_EQ(1, ini_getbool("s", "number", 0, name)); });
  expectFrugal("getsection", [&] { EXPECT_EQ(1, ini_getsection(1, buffer, sizeof buffer, name)); });
  expectFrugal("getkey", [&] { EXPECT_EQ(3, ini_getkey("s", 0, buffer, sizeof buffer, name)); });
  expectFrugal("hassection", [&] { EXPECT_EQ(1, ini_hassection("t", name)); });
  expectFrugal("haskey", [&] { EXPECT_EQ(1, ini_haskey("t", "k", name)); });
  const auto goOn = [](const char*, const char*, const char*, void*) { return 1; };
  expectFrugal("browse", [&] { EXPECT_EQ(1, ini_browse(goOn, nullptr, name)); });
}

TEST_F(Stack, ChangingStaysBelowTenKilobytes) {
  expectFrugal("unchanged", put("s", "key", "value"));
  expectFrugal("patched", put("s", "key", "VALUE"));
  expectFrugal("rewritten", put("s", "key", "a longer one"));
  expectFrugal("quoted", put("s", "key", "a;b\"c"));
  expectFrugal("new key", put("s", "new", "1"));
  expectFrugal("new section", put("new", "key", "1"));
  expectFrugal("key deleted", put("s", "new", nullptr));
  expectFrugal("section deleted", put("new", nullptr, nullptr));
  expectFrugal("putl", [&] { EXPECT_EQ(1, ini_putl("s", "number", LONG_MIN, file.c_str())); });
  expectFrugal("putf", [&] { EXPECT_EQ(1, ini_putf("s", "number", 3e38F, file.c_str())); });
  expectFrugal("putbool", [&] { EXPECT_EQ(1, ini_putbool("s", "number", 1, file.c_str())); });
  std::filesystem::remove(file);
  expectFrugal("created", put("s", "key", "value"));
}

TEST_F(Stack, FailingStaysBelowTenKilobytes) {
  renamingFails = true;
  expectFrugal("copied in place of a move", put("s", "key", "a longer one"));
  renamingFails = false;
  EXPECT_BYTES_EQ("a longer one",
                  (ini_gets("s", "key", "", buffer, sizeof buffer, file.c_str()), buffer));

  // Below a file no other can be made; one that cannot grow cannot be filled.
  const std::string below = file + "/x.ini";
  expectFrugal("nothing to create in",
               [&] { EXPECT_EQ(0, ini_puts("s", "k", "v", below.c_str())); });
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{3, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  expectFrugal("rewriting failed", put("s", "key", "another length", 0));
  expectFrugal("patch failed", put("s", "key", "A LONGER ONE", 0));
  std::filesystem::remove(file);
  expectFrugal("creation failed", put("s", "key", "value", 0));
  setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace
