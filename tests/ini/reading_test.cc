// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "ini/ini_fixture.h"

using namespace std::string_literals;

namespace {

using Strings = std::vector<std::string>;
using Reading = IniTest;

const std::string NO_VALUE = "<default>";

// ---- Sections

TEST_F(Reading, SectionNamesAreTrimmedAndCompareCaseInsensitively) {
  for (const char* header : {"[ Ethernet ]", "[ETHERNET]", " \t[\tethernet\r]", "[ethernet] x"}) {
    writeBytes(file, header + "\nk=v\n"s);
    EXPECT_EQ("v", get("ethernet", "k")) << header;
    EXPECT_EQ("v", get("EtherNet", "k")) << header;
  }
}

TEST_F(Reading, SectionNamesCompareInFullLength) {
  writeBytes(file, "[sec]\nk=v\n");
  EXPECT_EQ(NO_VALUE, get("se", "k"));
  EXPECT_EQ(NO_VALUE, get("sect", "k"));
}

TEST_F(Reading, LastBracketClosesTheName) {
  writeBytes(file, "[a]b]\nk=1\n[c] ; note ]\nk=2\n");
  EXPECT_EQ("1", get("a]b", "k"));
  EXPECT_EQ("2", get("c] ; note", "k"));
}

TEST_F(Reading, HeaderNeedsAClosingBracketAndMayHoldASeparator) {
  writeBytes(file, "[s]\n[open\n[k=1\n[a=b]\nk=2\n");
  EXPECT_EQ("1", get("s", "[k"));
  EXPECT_EQ("2", get("a=b", "k"));
  EXPECT_EQ(NO_VALUE, get("s", "k")) << "the header ends the section before";
}

TEST_F(Reading, UnnamedSectionEndsAtTheFirstHeader) {
  for (const char* header : {"[s]", "[]", "[ ]"}) {
    writeBytes(file, "k=v\n"s + header + "\nlater=x\n");
    for (const char* unnamed : {static_cast<const char*>(nullptr), ""}) {
      EXPECT_EQ("v", get(unnamed, "k"));
      EXPECT_EQ(NO_VALUE, get(unnamed, "later"));
    }
  }
}

TEST_F(Reading, OnlyTheFirstSectionOfANameCounts) {
  writeBytes(file, "[s]\na=1\n[t]\n[s]\na=2\nb=3\n");
  EXPECT_EQ("1", get("s", "a"));
  EXPECT_EQ(NO_VALUE, get("s", "b"));
}

// ---- Keys

TEST_F(Reading, KeysAreTrimmedAndCompareCaseInsensitivelyInFullLength) {
  writeBytes(file, "[connection]\n\t ID \t= home\n");
  EXPECT_EQ("home", get("connection", "id"));
  EXPECT_EQ("home", get("connection", "Id"));
  EXPECT_EQ(NO_VALUE, get("connection", "i"));
  EXPECT_EQ(NO_VALUE, get("connection", "idx"));
}

TEST_F(Reading, ColonSeparatesOnlyInLinesWithoutEqualsSign) {
  writeBytes(file, "[s]\na: 1:2\nb:c=3\ne=4:5=6\n");
  EXPECT_EQ("1:2", get("s", "a"));
  EXPECT_EQ("3", get("s", "b:c"));
  EXPECT_EQ(NO_VALUE, get("s", "b"));
  EXPECT_EQ("4:5=6", get("s", "e"));
}

TEST_F(Reading, CommentsAndLinesWithoutSeparatorAreSkipped) {
  EXPECT_EQ("5", valueIn("[s]\n;k=1\n  # k=2\nk\n\n;[x]\nk=5\nk=6\n"));
  EXPECT_EQ(NO_VALUE, get("s", ";k"));
  EXPECT_EQ(NO_VALUE, get("s", "# k"));
  EXPECT_EQ(NO_VALUE, get("x", "k"));
}

TEST_F(Reading, WhitespaceIsEveryByteUpTo32) {
  for (int byte = 1; byte <= 255; ++byte) {
    const std::string b(1, static_cast<char>(byte));
    if (b == "\n") continue;
    const std::string value =
        valueIn(b + "[" + b + "s" + b + "]\n" + b + "k" + b + "=" + b + "v" + b + "\n");
    if (byte <= 32) {
      EXPECT_EQ("v", value) << "byte " << byte;
    } else {
      EXPECT_EQ(NO_VALUE, value) << "byte " << byte;
    }
  }
}

TEST_F(Reading, BytesAbove127AreNeverWhitespace) {
  for (int byte = 127; byte <= 255; ++byte) {
    const std::string b(1, static_cast<char>(byte));
    EXPECT_BYTES_EQ(b + "v" + b, valueIn("[s]\nk=" + b + "v" + b + "\n"));
  }
}

// ---- Values

TEST_F(Reading, ValuesAreCleaned) {
  const std::vector<std::pair<std::string, std::string>> values = {
      {"", ""},
      {"  a  b  ", "a  b"},
      // Notes
      {"v ; note", "v"},
      {"v#note", "v"},
      {"; note", ""},
      {"  # note", ""},
      // Quotes protect
      {R"("a;b" ; note)", "a;b"},
      {R"("a#b"# note)", "a#b"},
      {R"(" a ")", " a "},
      {R"("")", ""},
      {R"("";x)", ""},
      {R"(a"b;c"d;e)", R"(a"b;c"d)"},
      {R"("open;#)", R"("open;#)"},
      // Escapes within quotes
      {R"("a""b")", R"(a"b)"},
      {R"("a\"b")", R"(a"b)"},
      {R"("a"";b")", R"(a";b)"},
      {R"("a\";b")", R"(a";b)"},
      {R"("""a""")", R"("a")"},
      {R"("a\")", R"(a\)"},
      {R"("a\b")", R"(a\b)"},
      // Without both outer quotes everything stays
      {R"(")", ""},
      {R"("a)", R"("a)"},
      {R"(a")", R"(a")"},
      {R"("a"b)", R"("a"b)"},
      {R"(a""b\"c)", R"(a""b\"c)"},
      {R"(a"";b)", R"(a"")"},
      {R"(a\";b)", R"(a\")"},
  };
  for (const auto& [written, expected] : values)
    EXPECT_EQ(expected, valueIn("[s]\nk=" + written + "\n")) << written;
}

// ---- Lines and files of any shape

TEST_F(Reading, CarriageReturnsDoNotCount) {
  writeBytes(file, "[s]\r\n; note\r\nk=v\r\nq=\"a;b\"\r\nempty=\r\n[t]\r\nk=w\r\n");
  EXPECT_EQ("v", get("s", "k"));
  EXPECT_EQ("a;b", get("s", "q"));
  EXPECT_EQ("", get("s", "empty"));
  EXPECT_EQ("w", get("t", "k"));
}

TEST_F(Reading, LastLineNeedsNoLineFeed) {
  EXPECT_EQ("v", valueIn("[s]\nk=v"));
  EXPECT_EQ("", valueIn("[s]\nk="));
  EXPECT_EQ(NO_VALUE, valueIn("[s]"));
}

TEST_F(Reading, MissingAndEmptyFilesGiveTheDefault) {
  EXPECT_EQ(NO_VALUE, get("s", "k"));
  EXPECT_EQ(NO_VALUE, valueIn(""));
  EXPECT_EQ(NO_VALUE, valueIn("\n\n\n"));
}

TEST_F(Reading, LineEndsAsTextAtItsFirstNul) {
  EXPECT_BYTES_EQ("a", valueIn("[s]\n\0k=hidden\nk=a\0b\nj=c\n"s));
  EXPECT_EQ("c", get("s", "j"));
}

TEST_F(Reading, InvalidUtf8PassesThrough) {
  EXPECT_BYTES_EQ("\xC3\x28\xFF\xED\xA0\x80", valueIn("[s]\nk=\xC3\x28\xFF\xED\xA0\x80\n"));
}

TEST_F(Reading, LongLinesAreSeenInPiecesOf511Bytes) {
  for (const std::size_t length : {510U, 511U, 512U, 513U, 1023U, 100000U}) {
    const std::string line = "k=" + std::string(length - 2, 'v');
    EXPECT_EQ(line.substr(2, 511 - 2), valueIn("[s]\n" + line + "\nnext=1\n")) << length;
    EXPECT_EQ("1", get("s", "next")) << length;
  }
}

TEST_F(Reading, EveryPieceOfALongLineIsALine) {
  EXPECT_EQ("v", valueIn("[s]\n" + std::string(511, 'x') + "k=v\n"));
  EXPECT_EQ("v", valueIn(std::string(1022, 'x') + "[s]\nk=v\n"));
  EXPECT_EQ(NO_VALUE, valueIn("[s]\n" + std::string(510, 'x') + "k=v\n"));
  EXPECT_EQ("v", get("s", "")) << "the second piece is \"=v\"";
}

// ---- The caller's buffer

TEST_F(Reading, ValuesAreCutToTheBuffer) {
  writeBytes(file, "[s]\nk=abc\n");
  for (int size = 1; size <= 5; ++size) {
    std::string buffer(8, '~');
    const std::string expected = std::string("abc").substr(0, static_cast<std::size_t>(size) - 1);
    EXPECT_EQ(static_cast<int>(expected.size()),
              ini_gets("s", "k", "default", buffer.data(), size, file.c_str()));
    EXPECT_STREQ(expected.c_str(), buffer.c_str());
    EXPECT_EQ(std::string(8 - expected.size() - 1, '~'), buffer.substr(expected.size() + 1));
  }
}

TEST_F(Reading, DefaultIsCutToTheBufferAndCopiedAsItIs) {
  char buffer[8];
  EXPECT_EQ(7, ini_gets("s", "k", " \"de;fault\" ", buffer, sizeof buffer, file.c_str()));
  EXPECT_STREQ(" \"de;fa", buffer);
  EXPECT_EQ(0, ini_gets("s", "k", nullptr, buffer, sizeof buffer, file.c_str()));
  EXPECT_STREQ("", buffer);
}

TEST_F(Reading, WithoutBufferOrKeyNothingIsTouched) {
  writeBytes(file, "[s]\nk=v\n");
  char buffer[] = "untouched";
  EXPECT_EQ(0, ini_gets("s", "k", "default", nullptr, 8, file.c_str()));
  EXPECT_EQ(0, ini_gets("s", "k", "default", buffer, 0, file.c_str()));
  EXPECT_EQ(0, ini_gets("s", "k", "default", buffer, -1, file.c_str()));
  EXPECT_EQ(0, ini_gets("s", nullptr, "default", buffer, sizeof buffer, file.c_str()));
  EXPECT_STREQ("untouched", buffer);
}

// ---- Numbers and truth values

TEST_F(Reading, LongNumbers) {
  const std::vector<std::pair<std::string, long>> values = {
      {"42", 42},
      {"-7", -7},
      {"0x1F", 31},
      {"0X1f", 31},
      {"12abc", 12},
      {"1x", 1},
      {"abc", 0},
      {"010", 10},
      {"-0x10", 0},
      {"x", 0},
      {"", -5},
      {"\"8\"", 8},
      {";8", -5},
      {" 9 ; x", 9},
      {std::string(62, '0') + "123", 1},
      {std::to_string(LONG_MIN), LONG_MIN},
  };
  for (const auto& [written, expected] : values) {
    writeBytes(file, "[s]\nk=" + written + "\n");
    EXPECT_EQ(expected, ini_getl("s", "k", -5, file.c_str())) << written;
  }
  EXPECT_EQ(-5, ini_getl("s", "absent", -5, file.c_str()));
  EXPECT_EQ(-5, ini_getl("s", nullptr, -5, file.c_str()));
  EXPECT_EQ(-5, ini_getl("s", "k", -5, directory.file("missing").c_str()));
}

TEST_F(Reading, FloatingNumbers) {
  const std::vector<std::pair<std::string, float>> values = {
      {"2.5", 2.5F},
      {"-1e3", -1000.0F},
      {"1.5x", 1.5F},
      {"abc", 0.0F},
      {"", 0.0F},
      {"0x10", 16.0F},
      {std::string(62, '0') + "123", 1.0F},
      {"3.4028235e38", FLT_MAX},
      {"3.5e38", HUGE_VALF},
      {"-1e400", -HUGE_VALF},
      {"inf", HUGE_VALF},
  };
  for (const auto& [written, expected] : values) {
    writeBytes(file, "[s]\nk=" + written + "\n");
    EXPECT_EQ(expected, ini_getf("s", "k", -5.5F, file.c_str())) << written;
  }
  EXPECT_EQ(-5.5F, ini_getf("s", "absent", -5.5F, file.c_str()));
  EXPECT_EQ(-5.5F, ini_getf("s", nullptr, -5.5F, file.c_str()));
  EXPECT_EQ(-5.5F, ini_getf("s", "k", -5.5F, directory.file("missing").c_str()));
}

TEST_F(Reading, TruthValuesAreKnownByTheirFirstByte) {
  const std::vector<std::pair<int, Strings>> values = {
      {1, {"1", "10", "Y", "yes", "T", "true", "\"yes\"", "you"}},
      {0, {"0", "01", "N", "no", "F", "false", "\"no\""}},
      {-5, {"", "2", "on", "off", ";1"}},
  };
  for (const auto& [expected, texts] : values) {
    for (const std::string& text : texts) {
      writeBytes(file, "[s]\nk=" + text + "\n");
      EXPECT_EQ(expected, ini_getbool("s", "k", -5, file.c_str())) << text;
    }
  }
  EXPECT_EQ(-5, ini_getbool("s", "absent", -5, file.c_str()));
  EXPECT_EQ(-5, ini_getbool("s", nullptr, -5, file.c_str()));
  EXPECT_EQ(-5, ini_getbool("s", "k", -5, directory.file("missing").c_str()));
}

// ---- Names by index

TEST_F(Reading, SectionsByIndex) {
  writeBytes(file, "x=1\n[ One ]\nk=1\n;[no]\n[two]\n[]\n[one]\n");
  char buffer[16];
  int index = 0;
  for (const char* name : {"One", "two", "", "one", ""}) {
    std::strcpy(buffer, "before");
    EXPECT_EQ(static_cast<int>(std::strlen(name)),
              ini_getsection(index++, buffer, sizeof buffer, file.c_str()));
    EXPECT_STREQ(name, buffer);
  }
}

TEST_F(Reading, KeysByIndex) {
  writeBytes(file, "top=0\n[s]\n Key One = 1\n;no=2\nplain\ntwo:2\n=3\nfour=4\n[t]\nfive=5\n");
  char buffer[16];
  int index = 0;
  for (const char* name : {"Key One", "two", "", "four", ""}) {
    std::strcpy(buffer, "before");
    EXPECT_EQ(static_cast<int>(std::strlen(name)),
              ini_getkey("s", index++, buffer, sizeof buffer, file.c_str()));
    EXPECT_STREQ(name, buffer);
  }
  EXPECT_EQ(3, ini_getkey(nullptr, 0, buffer, sizeof buffer, file.c_str()));
  EXPECT_STREQ("top", buffer);
  EXPECT_EQ(0, ini_getkey("", 1, buffer, sizeof buffer, file.c_str()));
  EXPECT_EQ(0, ini_getkey("absent", 0, buffer, sizeof buffer, file.c_str()));
  EXPECT_STREQ("", buffer);
}

TEST_F(Reading, NamesByIndexAreCutToTheBuffer) {
  writeBytes(file, "[section]\nname=1\n");
  char buffer[] = "~~~~~~~~";
  EXPECT_EQ(0, ini_getsection(0, buffer, 1, file.c_str()));
  EXPECT_STREQ("", buffer);
  EXPECT_EQ(3, ini_getsection(0, buffer, 4, file.c_str()));
  EXPECT_STREQ("sec", buffer);
  EXPECT_EQ(1, ini_getkey("section", 0, buffer, 2, file.c_str()));
  EXPECT_STREQ("n", buffer);
  EXPECT_STREQ("c", buffer + 2) << "behind the end nothing is touched";
}

TEST_F(Reading, NamesByIndexNeedABufferAndAnIndex) {
  writeBytes(file, "[s]\nk=v\n");
  char buffer[] = "untouched";
  EXPECT_EQ(0, ini_getsection(0, nullptr, 8, file.c_str()));
  EXPECT_EQ(0, ini_getsection(0, buffer, 0, file.c_str()));
  EXPECT_EQ(0, ini_getsection(-1, buffer, sizeof buffer, file.c_str()));
  EXPECT_EQ(0, ini_getkey("s", 0, nullptr, 8, file.c_str()));
  EXPECT_EQ(0, ini_getkey("s", 0, buffer, 0, file.c_str()));
  EXPECT_EQ(0, ini_getkey("s", -1, buffer, sizeof buffer, file.c_str()));
  EXPECT_STREQ("untouched", buffer);
}

TEST_F(Reading, NamesByIndexOfAMissingFileAreEmpty) {
  char section[] = "before";
  char key[] = "before";
  EXPECT_EQ(0, ini_getsection(0, section, sizeof section, file.c_str()));
  EXPECT_STREQ("", section);
  EXPECT_EQ(0, ini_getkey("s", 0, key, sizeof key, file.c_str()));
  EXPECT_STREQ("", key);
}

// ---- Existence

TEST_F(Reading, SectionsAndKeysExistOrNot) {
  const std::string longName(100, 'n');
  writeBytes(file, "top=1\n[ S ]\nk=\n" + longName + "=" + longName + "\n[" + longName + "]\n");
  EXPECT_EQ(1, ini_hassection("s", file.c_str()));
  EXPECT_EQ(1, ini_hassection(longName.c_str(), file.c_str()));
  EXPECT_EQ(0, ini_hassection("t", file.c_str()));
  EXPECT_EQ(1, ini_haskey("S", "K", file.c_str()));
  EXPECT_EQ(1, ini_haskey("s", longName.c_str(), file.c_str()));
  EXPECT_EQ(1, ini_haskey(nullptr, "top", file.c_str()));
  EXPECT_EQ(0, ini_haskey("s", "top", file.c_str()));
  EXPECT_EQ(0, ini_haskey("t", "k", file.c_str()));
}

TEST_F(Reading, NothingExistsInAMissingFile) {
  EXPECT_EQ(0, ini_hassection("s", file.c_str()));
  EXPECT_EQ(0, ini_hassection(nullptr, file.c_str()));
  EXPECT_EQ(0, ini_haskey("s", "k", file.c_str()));
  EXPECT_TRUE(directory.names().empty());
}

// ---- Walking

struct Walk {
  Strings lines;
  std::size_t limit = 100;

  static int visit(const char* section, const char* key, const char* value, void* userData) {
    auto& walk = *static_cast<Walk*>(userData);
    walk.lines.push_back("["s + section + "] " + key + "=" + value);
    return walk.lines.size() < walk.limit ? 1 : 0;
  }
};

TEST_F(Reading, WalkVisitsEveryKeyLineInOrder) {
  writeBytes(file,
             "top = 0 ; note\n[ One ]\n a : \"x;y\" # note\n; b=1\nplain\n\nc=\r\n[two]\ne=f=g\n"
             "[One]\na=\"p\"\"q\"\n[]\nz=1");
  Walk walk;
  EXPECT_EQ(1, ini_browse(Walk::visit, &walk, file.c_str()));
  EXPECT_EQ(
      (Strings{"[] top=0", "[One] a=x;y", "[One] c=", "[two] e=f=g", "[One] a=p\"q", "[] z=1"}),
      walk.lines);
}

TEST_F(Reading, WalkStopsWhenToldTo) {
  writeBytes(file, "a=1\nb=2\nc=3\n");
  Walk walk;
  walk.limit = 2;
  EXPECT_EQ(1, ini_browse(Walk::visit, &walk, file.c_str()));
  EXPECT_EQ((Strings{"[] a=1", "[] b=2"}), walk.lines);
}

TEST_F(Reading, WalkNeedsAFile) {
  Walk walk;
  EXPECT_EQ(0, ini_browse(Walk::visit, &walk, file.c_str()));
  writeBytes(file, "");
  EXPECT_EQ(1, ini_browse(Walk::visit, &walk, file.c_str()));
  EXPECT_TRUE(walk.lines.empty());
}

TEST_F(Reading, WalkSharesItsBufferBetweenSectionAndLine) {
  const std::string name(300, 'n');
  writeBytes(file, "[" + name + "]\nk=" + std::string(400, 'v') + "\nlast=1\n");
  Walk walk;
  EXPECT_EQ(1, ini_browse(Walk::visit, &walk, file.c_str()));
  constexpr std::size_t ROOM = 512 - 301 - 1;  // the name with its NUL, and the line's NUL
  EXPECT_EQ((Strings{"[" + name + "] k=" + std::string(ROOM - 2, 'v'), "[" + name + "] last=1"}),
            walk.lines);
}

TEST_F(Reading, WalkEndsWithTheLongestSectionName) {
  writeBytes(file, "[" + std::string(508, 'n') + "]\nab=12\n");
  Walk walk;
  EXPECT_EQ(1, ini_browse(Walk::visit, &walk, file.c_str()));
  EXPECT_EQ(Strings{"[" + std::string(508, 'n') + "] =1"}, walk.lines) << "two bytes at a time";
}

}  // namespace
