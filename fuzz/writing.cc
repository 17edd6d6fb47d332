// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Sequences of writes. The input is a file and, each behind "@@" and an LF, changes to it: lines
// "section|key|value", "section|key" (delete the key) or "section" (delete the section). Without
// "@@" the input is one change, and there is no file at first.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>

#include "fuzz/support.h"
#include "ini/ini.h"

namespace {

constexpr std::size_t LINE_MAX_BYTES = INI_BUFFERSIZE - 1;

struct Change {
  std::string section;
  std::optional<std::string> key;
  std::optional<std::string> value;
};

Change parseChange(const std::string& text) {
  std::string visible = text.substr(0, text.find('\0'));
  if (!visible.empty() && visible.back() == '\n') visible.pop_back();
  const auto name = [&](std::size_t start, std::size_t end) {
    const std::string line = visible.substr(start, end - start);
    return line.substr(0, line.find('\n'));  // names of several lines have no meaning
  };
  const std::size_t first = visible.find('|');
  if (first == std::string::npos) return {name(0, first), {}, {}};
  const std::size_t second = visible.find('|', first + 1);
  Change change{name(0, first), {}, {}};
  if (second == std::string::npos) {
    change.key = name(first + 1, second);
  } else {
    change.key = name(first + 1, second);
    change.value = visible.substr(second + 1);
  }
  return change;
}

bool isWhitespace(char c) { return c >= 1 && c <= ' '; }

/** Whether a name reads back as it was written. */
bool isPlainName(const std::string& name) {
  return !name.empty() && name.size() < 100 && !isWhitespace(name.front()) &&
         !isWhitespace(name.back()) && name.find_first_of("[]=:;#\n") == std::string::npos;
}

/** The line for a key and a value, quotes and all. */
std::string lineOf(const std::string& key, const std::string& value) {
  std::string visible = value.substr(0, value.find('\n'));
  const std::string name = key.substr(0, INI_BUFFERSIZE - 4);
  const std::size_t room = LINE_MAX_BYTES - name.size() - 2;  // beside "=" and LF
  visible.resize(std::min(visible.size(), LINE_MAX_BYTES));
  const bool quoted = visible.find_first_of("\";#") != std::string::npos ||
                      (!visible.empty() && visible.back() == ' ');
  if (!quoted || room < 2) return name + "=" + visible.substr(0, room) + "\n";
  std::string inner;
  for (const char c : visible) {
    const std::string piece = c == '"' ? "\\\"" : std::string(1, c);
    if (inner.size() + piece.size() > room - 2) break;
    inner += piece;
  }
  return name + "=\"" + inner + "\"\n";
}

/** What a value becomes on its way into a file and out again. */
std::string readBack(std::string value) {
  value.resize(std::min(value.size(), value.find('\n')));
  const bool quoted =
      value.find_first_of("\";#") != std::string::npos || (!value.empty() && value.back() == ' ');
  if (quoted) return value;
  while (!value.empty() && isWhitespace(value.back())) value.pop_back();
  while (!value.empty() && isWhitespace(value.front())) value.erase(0, 1);
  return value;
}

/** Whether text is at most one line of a file: an LF, if any, ends it. */
bool isOneLine(std::string_view text) {
  return text.size() <= LINE_MAX_BYTES && text.substr(0, text.size() - 1).find('\n') == text.npos;
}

/** Where "after" is "before" with one old piece replaced by a new one, for which a rule holds. */
template <typename Rule>
std::optional<std::size_t> findReplacement(const std::string& before, const std::string& after,
                                           const std::string& piece, Rule&& rule) {
  if (after.size() < piece.size() || before.size() + piece.size() < after.size()) return {};
  const std::size_t oldSize = before.size() + piece.size() - after.size();
  const auto firstDifference = static_cast<std::size_t>(
      std::mismatch(before.begin(), before.end(), after.begin(), after.end()).first -
      before.begin());
  for (std::size_t at = 0; at <= firstDifference && at + piece.size() <= after.size(); ++at) {
    if (after.compare(at, piece.size(), piece) != 0) continue;
    if (after.compare(at + piece.size(), std::string::npos, before, at + oldSize) != 0) continue;
    if (rule(at, std::string_view(before).substr(at, oldSize))) return at;
  }
  return {};
}

class Writer {
 public:
  void start(const std::optional<std::string>& content) {
    std::remove(path.c_str());
    if (content) writeOldFile(path, *content);
  }

  /** Makes a change and checks all that it may and must do. */
  void perform(const Change& change) {
    const bool existed = exists(path);
    const std::string before = existed ? readBytes(path) : "";
    if (existed) writeOldFile(path, before);
    const ino_t inode = existed ? inodeOf(path) : 0;
    const int held = open(path.c_str(), O_RDONLY | O_CLOEXEC);  // its number is not used again
    const std::optional<std::string> old = change.key ? read(change) : std::nullopt;
    const bool hadSection = ini_hassection(change.section.c_str(), path.c_str()) != 0;

    REQUIRE(ini_puts(change.section.c_str(), change.key ? change.key->c_str() : nullptr,
                     change.value ? change.value->c_str() : nullptr, path.c_str()) == 1);

    if (held >= 0) close(held);
    if (!existed && !(change.key && change.value)) {
      REQUIRE(fuzzFolder().names().empty());
      return;
    }
    REQUIRE(fuzzFolder().names() == std::vector<std::string>{"test.ini"});
    const std::string after = readBytes(path);
    const bool sameFile = existed && inodeOf(path) == inode;
    const bool untouched = sameFile && isStillOld(path);
    REQUIRE(untouched || modeOf(path) == 0600);
    if (!change.key) {
      const auto isGone = [&](std::size_t /*at*/, std::string_view gone) {
        return change.section.empty() || !gone.empty();
      };
      REQUIRE(hadSection ? findReplacement(before, after, "", isGone).has_value()
                         : after == before);
    } else if (!change.value) {
      checkKeyDeleted(before, after, old, untouched);
    } else {
      checkWritten(change, before, after, old, untouched, sameFile, hadSection, existed);
    }
  }

 private:
  std::optional<std::string> read(const Change& change) const {
    const char* section = change.section.c_str();
    if (ini_haskey(section, change.key->c_str(), path.c_str()) == 0) return {};
    std::array<char, 2 * INI_BUFFERSIZE> buffer{};
    ini_gets(section, change.key->c_str(), "", buffer.data(), buffer.size(), path.c_str());
    return buffer.data();
  }

  static void checkKeyDeleted(const std::string& before, const std::string& after,
                              const std::optional<std::string>& old, bool untouched) {
    if (!old) {
      REQUIRE(untouched && after == before);
      return;
    }
    REQUIRE(findReplacement(before, after, "", [](std::size_t, std::string_view line) {
      return !line.empty() && isOneLine(line);
    }));
  }

  void checkWritten(const Change& change, const std::string& before, const std::string& after,
                    const std::optional<std::string>& old, bool untouched, bool sameFile,
                    bool hadSection, bool existed) const {
    if (old && *old == *change.value) {
      REQUIRE(untouched && after == before);
      return;
    }
    const std::string line = lineOf(*change.key, *change.value);
    REQUIRE(line.size() <= LINE_MAX_BYTES);
    if (old) {
      const auto at =
          findReplacement(before, after, line, [](std::size_t, std::string_view replaced) {
            return !replaced.empty() && isOneLine(replaced);
          });
      REQUIRE(at);
      const bool patched =
          before.size() == after.size() && before.at(*at + line.size() - 1) == '\n';
      REQUIRE(!patched || sameFile);
    } else {
      const std::string header =
          hadSection || change.section.empty() ? "" : "[" + change.section + "]\n";
      const bool endsInLine = before.empty() ? header.empty() : before.back() == '\n';
      const std::string atEnd = (existed && !endsInLine ? "\n" : "") + header + line;
      const auto isInsertion = [&](std::size_t at, std::string_view replaced) {
        return replaced.empty() && at < before.size();
      };
      REQUIRE(after == before + atEnd ||
              (header.empty() && findReplacement(before, after, line, isInsertion)));
    }
    checkReadBack(change);
  }

  void checkReadBack(const Change& change) const {
    const std::string& section = change.section;
    if (!isPlainName(*change.key) || !(section.empty() || isPlainName(section))) return;
    const std::optional<std::string> found = read(change);
    REQUIRE(found);
    const std::string expected = readBack(*change.value);
    // Quotes double at most; a shorter value cannot be cut.
    if (change.value->size() < (LINE_MAX_BYTES - 110) / 2) {
      REQUIRE(*found == expected);
    } else {
      REQUIRE(found->size() <= change.value->size());
    }
  }

  std::string path = fuzzFolder().file("test.ini");
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Writer writer;
  std::vector<std::string> pieces = splitInput(textOf(data, size));
  constexpr std::size_t MOST = 12;
  if (pieces.size() > MOST) pieces.resize(MOST);
  if (pieces.size() == 1) {
    writer.start({});
  } else {
    writer.start(pieces.front());
    pieces.erase(pieces.begin());
  }
  for (const std::string& piece : pieces) writer.perform(parseChange(piece));
  return 0;
}
