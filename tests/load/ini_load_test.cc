// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ini/ini.h"
#include "load/cost.h"
#include "support/bytes.h"
#include "support/files.h"

namespace {

// The end of every file: what the operations look for and change, and a section behind it.
const std::string REST = "[end]\nkey=1\n";

std::string endWith(const std::string& line, const std::string& added = "") {
  return "before=1\n" + line + "after=2\n" + added + REST;
}

const std::string END = endWith("key=old\n");

/** A long file made of numbered pieces. It is never in memory as a whole. */
struct Shape {
  std::string head;
  std::function<std::string(int)> piece;
  int count;
  std::string header;  // of the section at the end, "last", unless the pieces belong to it
  int sections;        // before that one
  int keys;            // in that one, before "key"

  /** Writes the file; returns its size without the end. */
  off_t write(const std::string& path) const {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << head;
    for (int i = 0; i < count; ++i) file << piece(i);
    file << header;
    const std::streamoff size = file.tellp();
    file << END;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
    return size;
  }

  /** Compares all of a file but its end, and returns that. */
  std::string endOf(const std::string& path) const {
    std::ifstream file(path, std::ios::binary);
    std::string found;
    const auto comesNext = [&](const std::string& part) {
      found.resize(part.size());
      file.read(found.data(), static_cast<std::streamsize>(found.size()));
      return file && found == part;
    };
    if (!comesNext(head)) return "<another head>";
    for (int i = 0; i < count; ++i)
      if (!comesNext(piece(i))) return "<another piece " + std::to_string(i) + ">";
    if (!comesNext(header)) return "<another header>";
    return {std::istreambuf_iterator<char>(file), {}};
  }
};

/** At full scale, 10, 100 MB of all that a file can hold. */
Shape longFile(int scale) {
  const int pieces = 10'000 / REDUCTION * scale;
  std::string body;
  while (body.size() < 1000)
    body += "; a comment that is to stay\r\n  Key : other ; note\nquoted=\"a;b\"\nno separator\n\n";
  const auto piece = [=](int i) { return "[section " + std::to_string(i) + "]\n" + body; };
  return {"", piece, pieces, "[last]\n", pieces, 1};
}

/** A line of 10 MB. */
Shape longLine(int scale) {
  const int pieces = 1'000 / REDUCTION * scale;
  const auto piece = [](int i) {
    const std::string number = std::to_string(i);
    return std::string(1000 - number.size(), '.') + number;
  };
  return {"[first]\nline=", piece, pieces, "\n[last]\n", 1, 1};
}

/** 100 000 keys in one section. */
Shape manyKeys(int scale) {
  const int pieces = 10'000 * scale;
  const auto piece = [](int i) { return "key" + std::to_string(100'000 + i) + "=value\n"; };
  return {"[last]\n", piece, pieces, "", 0, pieces + 1};
}

struct Load {
  const char* name;
  Shape (*make)(int scale);

  friend std::ostream& operator<<(std::ostream& stream, const Load& load) {
    return stream << load.name;
  }
};

/** A file of a shape. */
class LongFile {
 public:
  LongFile(Shape made, std::string where)
      : shape(std::move(made)), path(std::move(where)), size(shape.write(path)) {}

  const char* name() const { return path.c_str(); }

  /** Compares all that comes before the end; returns the end. */
  std::string end() const { return shape.endOf(path); }

  void restore() const {
    if (truncate(name(), size) != 0) throw std::runtime_error("cannot cut " + path);
    std::ofstream(path, std::ios::binary | std::ios::app) << END;
  }

  Shape shape;

 private:
  std::string path;
  off_t size;  // without the end
};

/** An operation on a file, which checks its own answer, and what the file's end becomes. */
struct Operation {
  const char* name;
  std::function<void(const LongFile& file)> perform;
  std::string end = END;
};

int countKeys(const char* /*section*/, const char* /*key*/, const char* /*value*/, void* count) {
  ++*static_cast<int*>(count);
  return 1;
}

/** Reads a text with an operation that takes a buffer. */
template <typename Read>
Operation reading(const char* name, std::string_view expected, Read&& read) {
  return {name, [=](const LongFile& file) {
            char buffer[16];
            EXPECT_EQ(static_cast<int>(expected.size()), read(file, buffer, sizeof buffer));
            // Comparing with std::string would need the heap.
            EXPECT_TRUE(expected == buffer) << buffer;
          }};
}

Operation readingValue(const char* name, const char* section, const char* key,
                       std::string_view expected) {
  return reading(name, expected, [=](const LongFile& file, char* buffer, int size) {
    return ini_gets(section, key, "none", buffer, size, file.name());
  });
}

const std::vector<Operation> READINGS = {
    readingValue("gets", "last", "key", "old"),
    readingValue("gets of a missing key", "last", "absent", "none"),
    readingValue("gets from a missing section", "absent", "key", "none"),
    reading("getsection", "last",
            [](const LongFile& file, char* buffer, int size) {
              return ini_getsection(file.shape.sections, buffer, size, file.name());
            }),
    reading("getkey", "key",
            [](const LongFile& file, char* buffer, int size) {
              return ini_getkey("last", file.shape.keys, buffer, size, file.name());
            }),
    {"hassection", [](const LongFile& file) { EXPECT_EQ(1, ini_hassection("last", file.name())); }},
    {"haskey", [](const LongFile& file) { EXPECT_EQ(1, ini_haskey("last", "key", file.name())); }},
    {"browse", [](const LongFile& file) {
       int count = 0;
       EXPECT_EQ(1, ini_browse(countKeys, &count, file.name()));
       EXPECT_LE(4, count);
     }}};

/** Sets a key, or deletes it. */
Operation change(const char* name, const char* section, const char* key, const char* value,
                 std::string end) {
  return {name,
          [=](const LongFile& file) { EXPECT_EQ(1, ini_puts(section, key, value, file.name())); },
          std::move(end)};
}

const std::vector<Operation> CHANGES = {
    change("unchanged value", "last", "key", "old", END),
    change("value of the same length", "last", "key", "new", endWith("key=new\n")),
    change("longer value", "last", "key", "longer", endWith("key=longer\n")),
    change("quoted value", "last", "key", "a;b", endWith("key=\"a;b\"\n")),
    change("new key", "last", "fresh", "1", endWith("key=old\n", "fresh=1\n")),
    change("deleted key", "last", "key", nullptr, endWith("")),
    change("deleted key that is not there", "last", "absent", nullptr, END),
    change("new section", "fresh", "key", "1", END + "[fresh]\nkey=1\n"),
    change("deleted section", "end", nullptr, nullptr, "before=1\nkey=old\nafter=2\n")};

class IniLoad : public testing::TestWithParam<Load> {
 protected:
  TemporaryDirectory directory;
  const LongFile small{GetParam().make(1), directory.file("small")};
  const LongFile large{GetParam().make(10), directory.file("large")};

  /** Neither heap nor memory grow with the file, and no descriptor is left. */
  static void expectFrugal(const Cost& small, const Cost& large) {
    EXPECT_LE(large.kilobytes, small.kilobytes + NOISE_IN_KILOBYTES);
    for (const Cost& cost : {small, large}) {
      EXPECT_EQ(0, cost.allocations);
      EXPECT_EQ(0, cost.descriptorsLeftOpen);
    }
  }

  void expectBounded(const Operation& operation) const {
    if (HasFailure()) return;  // the children would fail for what failed before
    SCOPED_TRACE(operation.name);
    const auto perform = [&](const LongFile& file) {
      const Cost cost = costOf([&] { operation.perform(file); });
      EXPECT_BYTES_EQ(operation.end, file.end());
      if (operation.end != END) file.restore();
      return cost;
    };
    const Cost one = perform(small);
    const Cost ten = perform(large);
    expectFrugal(one, ten);
    // Without memory, all that a file is worked on it is read or written for.
    expectLinear(one, ten);
    EXPECT_EQ((std::vector<std::string>{"large", "small"}), directory.names());
  }
};

TEST_P(IniLoad, CostsAsMuchForReadingAsTheFileIsLong) {
  for (const Operation& operation : READINGS) expectBounded(operation);
}

TEST_P(IniLoad, CostsAsMuchForChangingAsTheFileIsLong) {
  for (const Operation& operation : CHANGES) expectBounded(operation);
}

INSTANTIATE_TEST_SUITE_P(Long, IniLoad,
                         testing::Values(Load{"File", longFile}, Load{"Line", longLine},
                                         Load{"Keys", manyKeys}),
                         testing::PrintToStringParamName());

// ---- The counting itself

TEST(Counting, NoticesTheHeapAndDescriptors) {
  const Cost cost = costOf([] {
    void* volatile memory = std::malloc(1234);
    std::free(memory);
    memory = std::malloc(5678);
    (void)open("/dev/null", O_RDONLY);
  });
  EXPECT_EQ(2, cost.allocations);
  EXPECT_EQ(1, cost.releases);
  EXPECT_EQ(1, cost.descriptorsLeftOpen);
}

TEST(Counting, NoticesMemoryAndTraffic) {
  constexpr std::size_t SIZE = 4 << 20;
  const Cost nothing = costOf([] {});
  const Cost something = costOf([] {
    std::string block(SIZE, 'x');
    const int file = open("/dev/null", O_WRONLY);
    EXPECT_EQ(static_cast<ssize_t>(SIZE), write(file, block.data(), block.size()));
    close(file);
  });
  EXPECT_LE(nothing.kilobytes + 3 * 1024, something.kilobytes);
  EXPECT_LE(static_cast<long long>(SIZE), something.bytes);
  EXPECT_EQ(nothing.calls + 1, something.calls);
}

}  // namespace
