// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Every reading operation, with buffers of any size, on any file. The input is the file.
#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

#include "fuzz/support.h"
#include "ini/ini.h"

namespace {

constexpr int LARGE = 2 * INI_BUFFERSIZE;

/** What an operation puts into a buffer of a size; the sanitizer sees when it reaches beyond it. */
template <typename Operation>
std::string withBuffer(int size, Operation&& operation) {
  const std::size_t room = size > 0 ? static_cast<std::size_t>(size) : 0;
  const std::unique_ptr<char[]> buffer(new char[room]);
  std::fill_n(buffer.get(), room, '\xEE');
  const int length = operation(buffer.get(), size);
  if (room == 0) {
    REQUIRE(length == 0);
    return {};
  }
  const char* end = std::find(buffer.get(), buffer.get() + room, '\0');
  REQUIRE(end == buffer.get() + length);
  return buffer.get();
}

/** An operation's text in full, after a look at what it leaves in buffers of several sizes. */
template <typename Operation>
std::string text(std::minstd_rand& random, Operation&& operation) {
  const std::string full = withBuffer(LARGE, operation);
  REQUIRE(full.size() < INI_BUFFERSIZE);
  for (const int size : {static_cast<int>(random() % 6) - 1, static_cast<int>(random() % 600),
                         static_cast<int>(full.size()) + static_cast<int>(random() % 2)}) {
    const std::size_t fits = size > 0 ? static_cast<std::size_t>(size) - 1 : 0;
    REQUIRE(withBuffer(size, operation) == full.substr(0, fits));
  }
  return full;
}

struct Walk {
  int calls = 0;
  int stopAt = 0;
};

int countCall(const char* section, const char* key, const char* value, void* data) {
  Walk& walk = *static_cast<Walk*>(data);
  for (const char* string : {section, key, value})
    REQUIRE(std::string_view(string).size() < INI_BUFFERSIZE);
  return ++walk.calls == walk.stopAt ? 0 : 1;
}

void readKey(std::minstd_rand& random, const char* section, const char* key, const char* file) {
  const bool present = ini_haskey(section, key, file) != 0;
  const std::string value = text(random, [&](char* buffer, int size) {
    return ini_gets(section, key, nullptr, buffer, size, file);
  });
  const std::string other = withBuffer(LARGE, [&](char* buffer, int size) {
    return ini_gets(section, key, "default", buffer, size, file);
  });
  REQUIRE(other == (present ? value : "default"));
  REQUIRE(present || value.empty());

  const long number = ini_getl(section, key, 4711, file);
  REQUIRE(!value.empty() || number == 4711);
  if (value.size() == 1) REQUIRE(number >= 0 && number <= 9);
  const float fraction = ini_getf(section, key, -7.5F, file);
  REQUIRE(present || fraction == -7.5F);
  REQUIRE(!present || !value.empty() || fraction == 0.0F);
  const int flag = ini_getbool(section, key, 2, file);
  const char first = value.empty() ? '?' : value[0];
  const bool yes = std::string_view("1YyTt").find(first) != std::string_view::npos;
  const bool no = std::string_view("0NnFf").find(first) != std::string_view::npos;
  REQUIRE(flag == (yes ? 1 : no ? 0 : 2));
}

void readSection(std::minstd_rand& random, const char* section, const char* file, int mostKeys) {
  const bool present = ini_hassection(section, file) != 0;
  for (int index = -1; index <= mostKeys; ++index) {
    const auto getKey = [&](char* buffer, int size) {
      return ini_getkey(section, index, buffer, size, file);
    };
    if (index < 0) {
      REQUIRE(getKey(nullptr, LARGE) == 0);
      continue;
    }
    const std::string key = text(random, getKey);
    REQUIRE(present || key.empty());
    if (!key.empty()) REQUIRE(ini_haskey(section, key.c_str(), file) == 1);
    readKey(random, section, key.c_str(), file);
    if (key.empty()) break;
  }
  readKey(random, section, "k", file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = fuzzFolder().file("test.ini");
  const char* file = path.c_str();
  const std::string content = textOf(data, size);
  writeOldFile(path, content);
  // The sizes come from the input too: the same ones each time.
  std::minstd_rand random(static_cast<unsigned>(std::hash<std::string>()(content)));

  constexpr int MOST = 3;
  for (const char* section : {static_cast<const char*>(nullptr), "s"})
    readSection(random, section, file, MOST);
  for (int index = 0; index < MOST; ++index) {
    const std::string section = text(
        random, [&](char* buffer, int room) { return ini_getsection(index, buffer, room, file); });
    if (section.empty()) continue;
    REQUIRE(ini_hassection(section.c_str(), file) == 1);
    readSection(random, section.c_str(), file, MOST);
  }
  REQUIRE(ini_hassection(nullptr, file) == 1);

  Walk all;
  REQUIRE(ini_browse(countCall, &all, file) == 1);
  Walk part;
  part.stopAt = static_cast<int>(random() % 8) + 1;
  REQUIRE(ini_browse(countCall, &part, file) == 1);
  REQUIRE(part.calls == std::min(all.calls, part.stopAt));
  REQUIRE(ini_browse(nullptr, nullptr, file) == 0);

  REQUIRE(isStillOld(path) && readBytes(path) == content);
  REQUIRE(fuzzFolder().names() == std::vector<std::string>{"test.ini"});
  return 0;
}
