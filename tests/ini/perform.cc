// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Performs operations on one INI file, a line each on standard input, and answers with a line each.
// Usage: perform FOLDER, an empty one.
//
// A string is "=" and its bytes as hexadecimal digits; "-" is NULL, or no file, or a buffer that
// was left alone. The answer to a reading operation ends in " touched" if it changed the file.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "ini/ini.h"
#include "support/files.h"

namespace {

using Text = std::optional<std::string>;

constexpr std::size_t GUARD = 64;
constexpr char UNUSED = '\x5A';

std::string encode(const Text& text) {
  if (!text) return "-";
  constexpr std::string_view DIGITS = "0123456789abcdef";
  std::string result = "=";
  for (const char character : *text) {
    const auto byte = static_cast<unsigned char>(character);
    result += {DIGITS[byte >> 4], DIGITS[byte & 0xF]};
  }
  return result;
}

/** The words of one request, taken one after the other. */
class Request {
 public:
  explicit Request(const std::string& line) : words(line) {}

  std::string word() {
    std::string result;
    if (!(words >> result)) throw std::runtime_error("a request is incomplete");
    return result;
  }

  Text text() {
    const std::string encoded = word();
    if (encoded == "-") return {};
    std::string result;
    for (std::size_t at = 1; at + 1 < encoded.size(); at += 2)
      result += static_cast<char>(std::stoi(encoded.substr(at, 2), nullptr, 16));
    return result;
  }

  int number() { return std::stoi(word()); }
  long longNumber() { return std::stol(word()); }
  float fraction() { return std::strtof(word().c_str(), nullptr); }

 private:
  std::istringstream words;
};

const char* pointer(const Text& text) { return text ? text->c_str() : nullptr; }

/** A buffer of a size for an operation, which must not reach beyond it. */
template <typename Operation>
std::string withBuffer(int size, Operation&& operation) {
  const std::size_t room = size > 0 ? static_cast<std::size_t>(size) : 0;
  std::vector<char> buffer(room + GUARD, UNUSED);
  const int result = operation(buffer.data(), size);
  const auto isUnused = [](char byte) { return byte == UNUSED; };
  const auto guard = buffer.begin() + static_cast<std::ptrdiff_t>(room);
  if (!std::all_of(guard, buffer.end(), isUnused)) return "overrun";
  Text text;
  // A text may begin with the filling, but no text fills a buffer with it.
  if (!std::all_of(buffer.begin(), guard, isUnused)) text = std::string(buffer.data());
  return std::to_string(result) + " " + encode(text);
}

std::string describe(float number) {
  if (std::isnan(number)) return "nan";
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%a", static_cast<double>(number));
  return text.data();
}

struct Walk {
  int calls;
  std::string seen;
};

int note(const char* section, const char* key, const char* value, void* data) {
  Walk& walk = *static_cast<Walk*>(data);
  walk.seen += " " + encode(section) + " " + encode(key) + " " + encode(value);
  return --walk.calls > 0 ? 1 : 0;
}

class Performer {
 public:
  explicit Performer(const std::string& folder) : directory(folder), file(folder + "/test.ini") {}

  std::string perform(const std::string& line) {
    Request request(line);
    const std::string operation = request.word();
    if (operation == "file") return setFile(request.text());
    if (operation.rfind("put", 0) == 0) return write(operation, request);
    const std::string answer = read(operation, request);
    return std::filesystem::exists(file) && !isStillOld(file) ? answer + " touched" : answer;
  }

 private:
  std::string setFile(const Text& content) {
    std::filesystem::remove(file);
    if (content) {
      writeBytes(file, *content);
      makeOld(file);
    }
    return "done";
  }

  std::string read(const std::string& operation, Request& request) const {
    const char* name = file.c_str();
    if (operation == "getsection") {
      const int index = request.number();
      return withBuffer(request.number(), [&](char* buffer, int size) {
        return ini_getsection(index, buffer, size, name);
      });
    }
    if (operation == "browse") {
      Walk walk = {request.number(), {}};
      return std::to_string(ini_browse(note, &walk, name)) + walk.seen;
    }
    const Text section = request.text();
    if (operation == "hassection") return std::to_string(ini_hassection(pointer(section), name));
    if (operation == "getkey") {
      const int index = request.number();
      return withBuffer(request.number(), [&](char* buffer, int size) {
        return ini_getkey(pointer(section), index, buffer, size, name);
      });
    }
    const Text key = request.text();
    if (operation == "haskey")
      return std::to_string(ini_haskey(pointer(section), pointer(key), name));
    if (operation == "getl")
      return std::to_string(ini_getl(pointer(section), pointer(key), request.longNumber(), name));
    if (operation == "getf")
      return describe(ini_getf(pointer(section), pointer(key), request.fraction(), name));
    if (operation == "getbool")
      return std::to_string(ini_getbool(pointer(section), pointer(key), request.number(), name));
    if (operation != "gets") throw std::runtime_error("unknown operation " + operation);
    const Text value = request.text();
    return withBuffer(request.number(), [&](char* buffer, int size) {
      return ini_gets(pointer(section), pointer(key), pointer(value), buffer, size, name);
    });
  }

  /** Answers with the result, the file, the names in the folder, and how the change was made. */
  std::string write(const std::string& operation, Request& request) const {
    const bool before = std::filesystem::exists(file);
    // Open, so that its number is not given to another file.
    const std::ifstream held(file);
    const ino_t inode = before ? inodeOf(file) : 0;
    const int result = put(operation, request);

    Text content;
    std::string way = "no_file";
    if (std::filesystem::exists(file)) {
      content = readBytes(file);
      way = !before                  ? "created"
            : inodeOf(file) != inode ? "replaced"
            : isStillOld(file)       ? "untouched"
                                     : "patched";
      makeOld(file);
    } else if (before) {
      way = "removed";
    }
    std::string names;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
      names += entry.path().filename().string() + "/";
    return std::to_string(result) + " " + encode(content) + " /" + names + " " + way;
  }

  int put(const std::string& operation, Request& request) const {
    const Text section = request.text();
    const Text key = request.text();
    const char* name = file.c_str();
    if (operation == "putl")
      return ini_putl(pointer(section), pointer(key), request.longNumber(), name);
    if (operation == "putf")
      return ini_putf(pointer(section), pointer(key), request.fraction(), name);
    if (operation == "putbool")
      return ini_putbool(pointer(section), pointer(key), request.number(), name);
    if (operation != "puts") throw std::runtime_error("unknown operation " + operation);
    const Text value = request.text();
    return ini_puts(pointer(section), pointer(key), pointer(value), name);
  }

  std::string directory;
  std::string file;
};

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 2) return 2;
  Performer performer(argv[1]);
  std::string line;
  // Each answer goes out at once: after a crash it is known which request was the last one.
  while (std::getline(std::cin, line)) std::cout << performer.perform(line) << std::endl;
}
