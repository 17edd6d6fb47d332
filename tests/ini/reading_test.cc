// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
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

TEST_F(Reading, EveryByteMayStandInsideAValue) {
  for (int byte = 1; byte <= 255; ++byte) {
    const std::string b(1, static_cast<char>(byte));
    if (b == "\n" || b == ";" || b == "#") continue;
    EXPECT_BYTES_EQ("a" + b + "z", valueIn("[s]\nk=a" + b + "z\n"));
  }
}

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

TEST_F(Reading, EveryPieceOf511BytesOfALongLineIsALine) {
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

TEST_F(Reading, LongNumbersAreDecimalOrHexadecimal) {
  const std::vector<std::pair<std::string, long>> values = {
      {"42", 42},
      {"-7", -7},
      {"0x1F", 31},
      {"0X1f", 31},
      {"12abc", 12},
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
}

TEST_F(Reading, FloatingNumbersAreThoseOfTheCLibrary) {
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
      {"1.0000000596046448", 1.0F},  // rounded to a double before
  };
  for (const auto& [written, expected] : values) {
    writeBytes(file, "[s]\nk=" + written + "\n");
    EXPECT_EQ(expected, ini_getf("s", "k", -5.5F, file.c_str())) << written;
  }
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
}

TEST_F(Reading, NumbersThatAreNotThereAreTheDefault) {
  writeBytes(file, "[s]\nk=1\n");
  const auto expectDefaults = [](const char* key, const std::string& path) {
    EXPECT_EQ(-5, ini_getl("s", key, -5, path.c_str()));
    EXPECT_EQ(-5.5F, ini_getf("s", key, -5.5F, path.c_str()));
    EXPECT_EQ(-5, ini_getbool("s", key, -5, path.c_str()));
  };
  expectDefaults("absent", file);
  expectDefaults(nullptr, file);
  expectDefaults("k", directory.file("missing"));
}

}  // namespace
