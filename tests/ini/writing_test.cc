// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ini/ini_fixture.h"

using namespace std::string_literals;

namespace {

using Writing = IniTest;

// ---- New files

TEST_F(Writing, MissingFileIsCreated) {
  EXPECT_EQ(1, put("s", "k", "v"));
  EXPECT_BYTES_EQ("[s]\nk=v\n", readBytes(file));
  EXPECT_EQ(1, ini_puts(nullptr, "k", "v", directory.file("null").c_str()));
  EXPECT_BYTES_EQ("k=v\n", readBytes(directory.file("null")));
  EXPECT_EQ(1, ini_puts("", "k", "", directory.file("empty").c_str()));
  EXPECT_BYTES_EQ("k=\n", readBytes(directory.file("empty")));
}

TEST_F(Writing, DeletingFromAMissingFileCreatesNothing) {
  EXPECT_EQ(1, put("s", "k", nullptr));
  EXPECT_EQ(1, put("s", nullptr, nullptr));
  EXPECT_EQ(1, put("s", nullptr, "v"));
  EXPECT_TRUE(directory.names().empty());
}

// ---- Unchanged and in place

/** Watches the file and its folder; the folder changes even if a file comes and goes. */
struct Untouched {
  const TemporaryDirectory& directory;
  std::string file;
  ino_t inode = inodeOf(file);

  Untouched(const TemporaryDirectory& folder, const std::string& path)
      : directory(folder), file(path) {
    makeOld(file);
    makeOld(directory.path);
  }
  bool sameFile() const { return inodeOf(file) == inode; }
  bool noFileBeside() const { return isStillOld(directory.path); }
  bool content() const { return isStillOld(file); }
};

TEST_F(Writing, StoredValueIsNotWrittenAgain) {
  const std::string bytes = "[ S ]\r\n K : \"a;b\" ; note\r\nempty=\nplain=v # note";
  writeBytes(file, bytes);
  const Untouched untouched(directory, file);
  EXPECT_EQ(1, put("s", "k", "a;b"));
  EXPECT_EQ(1, put("s", "empty", ""));
  EXPECT_EQ(1, put("s", "plain", "v"));
  EXPECT_EQ(1, put("s", "absent", nullptr));
  EXPECT_EQ(1, put("absent", "k", nullptr));
  EXPECT_TRUE(untouched.content() && untouched.sameFile() && untouched.noFileBeside());
  EXPECT_EQ(0644U, modeOf(file));
  EXPECT_BYTES_EQ(bytes, readBytes(file));
}

TEST_F(Writing, LineOfTheSameLengthIsPatchedInPlace) {
  const std::vector<std::array<std::string, 4>> cases = {
      {"[s]\nk=old\nj=1\n", "k", "new", "[s]\nk=new\nj=1\n"},
      {"[s]\nk=v\n", "k", "V", "[s]\nk=V\n"},
      {"[s]\nk = v\n", "k", "new", "[s]\nk=new\n"},
      {"[s]\nk=v\r\n", "k", "vw", "[s]\nk=vw\n"},
      {"[s]\nk=v;note\n", "k", "123456", "[s]\nk=123456\n"},
      {"[s]\nk=abc\n", "k", ";", "[s]\nk=\";\"\n"},
      {"[s]\nKEY=1\n", "key", "2", "[s]\nkey=2\n"},
      {"\n\n[s]\nk=\0zz\nj=1"s, "k", "123", "\n\n[s]\nk=123\nj=1"},
  };
  for (const auto& [before, key, value, after] : cases) {
    writeBytes(file, before);
    const Untouched untouched(directory, file);
    EXPECT_EQ(1, put("s", key.c_str(), value.c_str()));
    EXPECT_TRUE(untouched.sameFile() && untouched.noFileBeside());
    EXPECT_BYTES_EQ(after, readBytes(file));
  }
}

TEST_F(Writing, LineOfAnotherLengthGoesThroughANewFile) {
  writeBytes(file, "[s]\nk=old\n");
  const Untouched untouched(directory, file);
  EXPECT_EQ(1, put("s", "k", "longer"));
  EXPECT_FALSE(untouched.sameFile());
  EXPECT_FALSE(untouched.noFileBeside());
}

// ---- Setting keys

TEST_F(Writing, ValuesAreReplaced) {
  EXPECT_BYTES_EQ("[s]\na=1\nk=longer\nb=2\n[t]\nk=3\n",
                  changed("[s]\na=1\n k = old ; note\nb=2\n[t]\nk=3\n", "s", "k", "longer"));
  EXPECT_BYTES_EQ("[s]\nk=\n", changed("[s]\nk=old\n", "s", "k", ""));
  EXPECT_BYTES_EQ("[s]\nk=longer\n", changed("[s]\nk=old", "s", "k", "longer"));
  EXPECT_BYTES_EQ("k=longer\n[s]\nk=1\n", changed("k=old\n[s]\nk=1\n", nullptr, "k", "longer"));
}

TEST_F(Writing, NewKeyGoesBeforeTheNextHeader) {
  EXPECT_BYTES_EQ("[s]\na=1\n\n; note\n  \nk=v\n[t]\nb=2\n",
                  changed("[s]\na=1\n\n; note\n  \n[t]\nb=2\n", "s", "k", "v"));
  EXPECT_BYTES_EQ("[s]\nk=v\n[t]\n", changed("[s]\n[t]\n", "s", "k", "v"));
  EXPECT_BYTES_EQ("a=1\nk=v\n[t]\n", changed("a=1\n[t]\n", "", "k", "v"));
  EXPECT_BYTES_EQ("k=v\n[t]\n", changed("[t]\n", nullptr, "k", "v"));
}

TEST_F(Writing, NewKeyOfTheLastSectionGoesToTheEnd) {
  EXPECT_BYTES_EQ("[s]\na=1\nk=v\n", changed("[s]\na=1\n", "s", "k", "v"));
  EXPECT_BYTES_EQ("[s]\na=1\nk=v\n", changed("[s]\na=1", "s", "k", "v"));
  EXPECT_BYTES_EQ("[s]\nk=v\n", changed("[s]", "s", "k", "v"));
  EXPECT_BYTES_EQ("[s]\n\n\nk=v\n", changed("[s]\n\n\n", "s", "k", "v"));
  EXPECT_BYTES_EQ("a\nk=v\n", changed("a", nullptr, "k", "v"));
  EXPECT_BYTES_EQ("k=v\n", changed("", nullptr, "k", "v"));
}

TEST_F(Writing, NewSectionGoesToTheEnd) {
  EXPECT_BYTES_EQ("[s]\na=1\n[n]\nk=v\n", changed("[s]\na=1\n", "n", "k", "v"));
  EXPECT_BYTES_EQ("[s]\na=1\n[n]\nk=v\n", changed("[s]\na=1", "n", "k", "v"));
  EXPECT_BYTES_EQ("[s]\n\n[n]\nk=v\n", changed("[s]\n\n", "n", "k", "v"));
  EXPECT_BYTES_EQ("\n[n]\nk=v\n", changed("", "n", "k", "v")) << "nor does an empty file end in LF";
}

TEST_F(Writing, OnlyTheFirstSectionOfANameIsChanged) {
  EXPECT_BYTES_EQ("[s]\na=1\nk=v\n[t]\n[s]\nk=old\n",
                  changed("[s]\na=1\n[t]\n[s]\nk=old\n", "s", "k", "v"));
  EXPECT_BYTES_EQ("[t]\n[s]\nk=2\n", changed("[s]\nk=1\n[t]\n[s]\nk=2\n", "s", nullptr, nullptr));
}

TEST_F(Writing, OtherLinesKeepTheirBytes) {
  const std::string before = "\xFF\0x\r\n[ S ]\r\nj : 1 ; \xC3\r\n\0=\n"s;
  const std::string after = "[t]\0\r\n[open\r\nlast"s;
  EXPECT_BYTES_EQ(before + "k=v\n" + after, changed(before + after, "s", "k", "v"));
}

// ---- Deleting

TEST_F(Writing, KeysAreDeleted) {
  EXPECT_BYTES_EQ("[s]\na=1\n\n[t]\nk=2\n",
                  changed("[s]\na=1\nk=old\n\n[t]\nk=2\n", "s", "k", nullptr));
  EXPECT_BYTES_EQ("[s]\n", changed("[s]\nk=old", "s", "k", nullptr));
  EXPECT_BYTES_EQ("[s]\nk=2\n", changed("[s]\nk=1\nk=2\n", "s", "k", nullptr));
  EXPECT_BYTES_EQ("[s]\nk=1\n", changed("k=0\n[s]\nk=1\n", nullptr, "k", nullptr));
}

TEST_F(Writing, SectionsAreDeleted) {
  const std::string bytes = "top=1\n[s]\na=1\n\n; note\n[ t ]\nb=2\n[u]\nc=3";
  EXPECT_BYTES_EQ("top=1\n[ t ]\nb=2\n[u]\nc=3", changed(bytes, "s", nullptr, nullptr));
  EXPECT_BYTES_EQ("top=1\n[s]\na=1\n\n; note\n[u]\nc=3", changed(bytes, "T", nullptr, "x"));
  EXPECT_BYTES_EQ("top=1\n[s]\na=1\n\n; note\n[ t ]\nb=2\n", changed(bytes, "u", nullptr, nullptr));
  EXPECT_BYTES_EQ(bytes.substr(6), changed(bytes, nullptr, nullptr, nullptr));
  EXPECT_BYTES_EQ(bytes, changed(bytes, "absent", nullptr, nullptr));
  EXPECT_BYTES_EQ("", changed("[s]\nk=v", "s", nullptr, nullptr));
}

// ---- Quoting and length of values

TEST_F(Writing, ValuesAreQuotedWhereNeededAndReadBack) {
  const std::vector<std::pair<std::string, std::string>> values = {
      {"a;b", R"("a;b")"},      {"#a", R"("#a")"}, {"a ", R"("a ")"},       {R"(a"b)", R"("a\"b")"},
      {R"("a")", R"("\"a\"")"}, {" ", R"(" ")"},   {"a b", "a b"},          {"a=b:c", "a=b:c"},
      {R"(a\b)", R"(a\b)"},     {"\xFF", "\xFF"},  {"ccmp;", R"("ccmp;")"},
  };
  for (const auto& [value, written] : values) {
    EXPECT_BYTES_EQ("[s]\nk=" + written + "\n", changed("[s]\n", "s", "k", value.c_str()));
    EXPECT_BYTES_EQ(value, get("s", "k"));
  }
}

TEST_F(Writing, LeadingBlanksAreWrittenButNotRead) {
  EXPECT_BYTES_EQ("[s]\nk= a\n", changed("[s]\n", "s", "k", " a"));
  EXPECT_EQ("a", get("s", "k"));
}

TEST_F(Writing, ValueEndsAtItsFirstLineFeed) {
  EXPECT_BYTES_EQ("[s]\nk=a\n[t]\n", changed("[s]\n[t]\n", "s", "k", "a\n[evil]\nx=1"));
  EXPECT_BYTES_EQ("[s]\nk=\n", changed("[s]\nk=old\n", "s", "k", "\n"));
  EXPECT_BYTES_EQ("[s]\nk=\"a \"\n", changed("[s]\nk=old-value\n", "s", "k", "a \n;"));
}

TEST_F(Writing, LinesFitIntoTheLineBuffer) {
  for (const std::size_t length : {507U, 508U, 509U, 510U, 511U, 512U, 100000U}) {
    const std::string value(length, 'v');
    const std::string kept = value.substr(0, 508);
    EXPECT_BYTES_EQ("[s]\nk=" + kept + "\nj=1\n",
                    changed("[s]\nk=\nj=1\n", "s", "k", value.c_str()));
    EXPECT_EQ(kept, get("s", "k"));
  }
}

// ---- Numbers and truth values

TEST_F(Writing, NumbersAndTruthValuesAreWrittenAsText) {
  const char* path = file.c_str();
  EXPECT_EQ(1, ini_putl("s", "zero", 0, path));
  EXPECT_EQ(1, ini_putl("s", "min", LONG_MIN, path));
  EXPECT_EQ(1, ini_putl("s", "max", LONG_MAX, path));
  EXPECT_EQ(1, ini_putf("s", "half", -1.5F, path));
  EXPECT_EQ(1, ini_putf("s", "huge", FLT_MAX, path));
  EXPECT_EQ(1, ini_putbool("s", "yes", -3, path));
  EXPECT_EQ(1, ini_putbool("s", "no", 0, path));
  EXPECT_BYTES_EQ("[s]\nzero=0\nmin=" + std::to_string(LONG_MIN) +
                      "\nmax=" + std::to_string(LONG_MAX) +
                      "\nhalf=-1.500000\nhuge=340282346638528859811704183484516925440.000000\nyes="
                      "true\nno=false\n",
                  readBytes(file));
}

// ---- Long files

/** Lines of every length and of any bytes, none of which is a header or the key "k". */
std::string noise(std::size_t size) {
  std::mt19937 random(2);  // the same bytes in every run
  std::string bytes;
  while (bytes.size() < size) {
    std::string line(random() % 1100, '\0');
    for (char& byte : line) byte = static_cast<char>(random());
    for (char& byte : line)
      if (byte == '[' || byte == 'k' || byte == 'K') byte = '.';
    bytes += line + "\n";
  }
  return bytes;
}

TEST_F(Writing, LongFilesAreCopiedByteForByte) {
  const std::string head = noise(100000) + "[s]\n";
  const std::string middle = noise(70000);
  const std::string tail = "[t]\n" + noise(50000) + "no line feed at the end";
  const std::string before = head + middle + "k=old\n" + middle + tail;
  EXPECT_BYTES_EQ(head + middle + "k=longer\n" + middle + tail,
                  changed(before, "s", "k", "longer"));
  EXPECT_BYTES_EQ(head + middle + middle + tail, changed(before, "s", "k", nullptr));
  EXPECT_BYTES_EQ(head + middle + "k=new\n" + middle + tail, changed(before, "s", "k", "new"));
  EXPECT_BYTES_EQ(head + middle + "k=old\n" + middle + "kk=1\n" + tail,
                  changed(before, "s", "kk", "1"));
  EXPECT_BYTES_EQ(head.substr(0, head.size() - 4) + tail, changed(before, "s", nullptr, nullptr));
  EXPECT_BYTES_EQ(before + "\n[n]\nk=1\n", changed(before, "n", "k", "1"));
}

TEST_F(Writing, BlocksEndAnywhere) {
  for (std::size_t length = 500; length <= 520; ++length) {
    const std::string filler =
        "[a]\n" + std::string(length, 'x') + "\n" + std::string(length - 3, 'y') + "\n";
    EXPECT_BYTES_EQ(filler + "[b]\nk=22\n", changed(filler + "[b]\nk=1\n", "b", "k", "22"));
    EXPECT_BYTES_EQ(filler + "k=1\n[b]\n", changed(filler + "[b]\n", "a", "k", "1"));
    EXPECT_BYTES_EQ(filler + "k=1\n", changed(filler, "a", "k", "1"));
    EXPECT_BYTES_EQ(filler + "z\n[c]\nk=1\n", changed(filler + "z", "c", "k", "1"));
  }
}

// ---- Names of files

TEST_F(Writing, TemporaryNameReplacesTheLastByte) {
  const auto rewriteWithLeftover = [&](const std::string& name, const std::string& leftover) {
    const TemporaryDirectory folder;
    writeBytes(folder.file(name), "[s]\nk=old\n");
    writeBytes(folder.file(leftover), "leftover");
    EXPECT_EQ(1, ini_puts("s", "k", "longer", folder.file(name).c_str())) << name;
    EXPECT_EQ(std::vector<std::string>{name}, folder.names()) << "the leftover was not used";
    EXPECT_BYTES_EQ("[s]\nk=longer\n", readBytes(folder.file(name)));
  };
  rewriteWithLeftover("wlan0.nmconnection", "wlan0.nmconnectio~");
  rewriteWithLeftover("x", "~");
  rewriteWithLeftover(std::string(255, 'n'), std::string(254, 'n') + "~");
  rewriteWithLeftover("backup~", "backup~~");
}

TEST_F(Writing, NameThatEndsInASlashIsNoFile) {
  writeBytes(file, "[s]\nk=old\n");
  for (const std::string name : {"test.ini/", "missing/", "folder/"}) {
    if (name == "folder/") directory.makeDirectory("folder");
    const std::vector<std::string> before = directory.names();
    const std::string path = directory.file(name);
    char buffer[8];
    EXPECT_EQ(3, ini_gets("s", "k", "def", buffer, sizeof buffer, path.c_str())) << name;
    EXPECT_EQ(0, ini_puts("s", "k", "v", path.c_str())) << name;
    EXPECT_EQ(0, ini_puts("s", "k", "longer", path.c_str())) << name;
    EXPECT_EQ(before, directory.names()) << name;
  }
  EXPECT_BYTES_EQ("[s]\nk=old\n", readBytes(file));
}

TEST_F(Writing, NeighboursAreLeftAlone) {
  writeBytes(directory.file("test.ini~"), "neighbour");
  writeBytes(file, "[s]\nk=old\n");
  EXPECT_EQ(1, put("s", "k", "longer"));
  EXPECT_EQ((std::vector<std::string>{"test.ini", "test.ini~"}), directory.names());
}

TEST_F(Writing, LinkIsReplacedByARewriteAndFollowedByAPatch) {
  const std::string real = directory.file("real.ini");
  writeBytes(real, "[s]\nk=old\n");
  std::filesystem::create_symlink("real.ini", file);
  EXPECT_EQ(1, put("s", "k", "new"));
  EXPECT_TRUE(std::filesystem::is_symlink(file));
  EXPECT_BYTES_EQ("[s]\nk=new\n", readBytes(real));
  EXPECT_EQ(1, put("s", "k", "longer"));
  EXPECT_FALSE(std::filesystem::is_symlink(file));
  EXPECT_BYTES_EQ("[s]\nk=longer\n", readBytes(file));
  EXPECT_BYTES_EQ("[s]\nk=new\n", readBytes(real));
}

}  // namespace
