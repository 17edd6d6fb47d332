// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// The unit as a whole, for what it refuses to be given: no caller outside can break most of it.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ini/file.h"
#include "ini/ini.h"
#include "ini/lines.h"
#include "ini/text.h"
#include "support/files.h"

using namespace ini;

namespace {

/** A pattern for the line that a failed assertion prints. */
std::string failureOf(const std::string& expression) {
  std::string pattern = "Assertion `";
  for (const char c : expression) {
    if (std::strchr("\\.*+?()[]{}|^$", c) != NULL) pattern += '\\';
    pattern += c;
  }
  return pattern + "' failed";
}

class Internals : public testing::Test {
 protected:
  char text[16] = "text";
  char other[16] = "";
};

using InternalsDeathTest = Internals;

TEST_F(InternalsDeathTest, BlockFlushKnowsItsLimits) {
  writer target(-1);
  int size = INI_BUFFERSIZE + 1;
  EXPECT_DEATH(target.cache_flush(&size), failureOf("*size <= INI_BUFFERSIZE"));
  size = -1;
  EXPECT_DEATH(target.cache_flush(&size), failureOf("pos > 0 && pos <= INI_BUFFERSIZE"));
}

TEST_F(InternalsDeathTest, TrimmingNeedsText) {
  EXPECT_DEATH(skip_leading(NULL, text), failureOf("str != NULL"));
  EXPECT_DEATH(skip_trailing(NULL, text), failureOf("str != NULL"));
  EXPECT_DEATH(skip_trailing(text, NULL), failureOf("base != NULL"));
}

TEST_F(InternalsDeathTest, CopyNeedsRoom) {
  EXPECT_DEATH(ini_strncpy(other, text, 0, QUOTE_NONE), failureOf("maxlen>0"));
}

TEST_F(InternalsDeathTest, CopyNeedsBothTexts) {
  const std::string expected = failureOf("source != NULL && dest != NULL");
  EXPECT_DEATH(ini_strncpy(other, NULL, sizeof other, QUOTE_NONE), expected);
  EXPECT_DEATH(ini_strncpy(NULL, text, sizeof text, QUOTE_NONE), expected);
}

TEST_F(InternalsDeathTest, CopyDoesNotOverwriteWhatItHasYetToRead) {
  const std::string expected = failureOf(
      "(dest < source || (dest == source && option != QUOTE_ENQUOTE)) || "
      "dest > source + strlen(source)");
  EXPECT_DEATH(ini_strncpy(text + 1, text, 8, QUOTE_NONE), expected);
  EXPECT_DEATH(ini_strncpy(text + 4, text, 8, QUOTE_NONE), expected);
  EXPECT_DEATH(ini_strncpy(text, text, sizeof text, QUOTE_ENQUOTE), expected);
}

TEST_F(Internals, CopyEndsWithTheText) {
  const char source[] = "text\0more";
  for (const quote_option option : {QUOTE_NONE, QUOTE_DEQUOTE, QUOTE_ENQUOTE}) {
    char target[] = "untouched text";
    ini_strncpy(target, source, sizeof target, option);
    EXPECT_STREQ(option == QUOTE_ENQUOTE ? "\"text\"" : "text", target);
    EXPECT_STREQ("ed text", target + 7) << option;
  }
}

TEST_F(Internals, CopyMayMoveTextDownInPlaceOrBehindItself) {
  ini_strncpy(text, text + 1, 8, QUOTE_NONE);
  EXPECT_STREQ("ext", text);
  ini_strncpy(text, text, sizeof text, QUOTE_DEQUOTE);
  EXPECT_STREQ("ext", text);
  ini_strncpy(text + 4, text, 8, QUOTE_NONE);
  EXPECT_STREQ("ext", text + 4);
}

TEST_F(InternalsDeathTest, ValuesMustBeThere) {
  quote_option quotes = QUOTE_NONE;
  EXPECT_DEATH(check_enquote(NULL), failureOf("Value != NULL"));
  EXPECT_DEATH(cleanstring(NULL, &quotes), failureOf("string != NULL"));
  EXPECT_DEATH(new_line(NULL, "v"), failureOf("Key != NULL && Value != NULL"));
  EXPECT_DEATH(new_line("k", NULL), failureOf("Key != NULL && Value != NULL"));
}

TEST_F(InternalsDeathTest, SearchNeedsANameOrAnIndex) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("test.ini");
  writeBytes(file, "[s]\nk=v\n");
  EXPECT_DEATH(ini_haskey("s", NULL, file.c_str()), failureOf("Key != NULL || idxKey >= 0"));
}

TEST_F(InternalsDeathTest, WritingNeedsAFileName) {
  EXPECT_DEATH(ini_puts("s", "k", "v", NULL), failureOf("Filename != NULL"));
  EXPECT_DEATH(ini_putl("s", "k", 1, NULL), failureOf("Filename != NULL"));
  EXPECT_DEATH(ini_putf("s", "k", 1, NULL), failureOf("Filename != NULL"));
  EXPECT_DEATH(ini_putbool("s", "k", 1, NULL), failureOf("Filename != NULL"));
}

// ---- Copying with quotes

std::string copied(const std::string& source, std::size_t maxlen, quote_option option) {
  char buffer[64];
  std::memset(buffer, '~', sizeof buffer);
  ini_strncpy(buffer, source.c_str(), maxlen, option);
  EXPECT_EQ('~', buffer[maxlen]) << "wrote more than " << maxlen << " bytes";
  return buffer;
}

TEST(Copy, OptionsHaveTheirNumbers) {
  EXPECT_EQ(0, QUOTE_NONE);
  EXPECT_EQ(1, QUOTE_ENQUOTE);
  EXPECT_EQ(2, QUOTE_DEQUOTE);
}

TEST(Copy, PlainTextIsCutToTheRoom) {
  EXPECT_EQ("", copied("abc", 1, QUOTE_NONE));
  EXPECT_EQ("ab", copied("abc", 3, QUOTE_NONE));
  EXPECT_EQ("abc", copied("abc", 4, QUOTE_NONE));
  EXPECT_EQ(R"(a""\")", copied(R"(a""\")", 32, QUOTE_NONE));
}

TEST(Copy, EnquotingKeepsTheClosingQuote) {
  EXPECT_EQ("a", copied("abc", 2, QUOTE_ENQUOTE)) << "no room for quotes";
  EXPECT_EQ(R"("")", copied("abc", 3, QUOTE_ENQUOTE));
  EXPECT_EQ(R"("a")", copied("abc", 4, QUOTE_ENQUOTE));
  EXPECT_EQ(R"("abc")", copied("abc", 6, QUOTE_ENQUOTE));
}

TEST(Copy, EnquotingEscapesInnerQuotesAsAWhole) {
  EXPECT_EQ(R"("a\"b")", copied(R"(a"b)", 7, QUOTE_ENQUOTE));
  EXPECT_EQ(R"("a\"")", copied(R"(a"b)", 6, QUOTE_ENQUOTE));
  EXPECT_EQ(R"("a")", copied(R"(a"b)", 5, QUOTE_ENQUOTE));
}

TEST(Copy, DequotingUndoesEscapes) {
  EXPECT_EQ(R"(a"b"c)", copied(R"(a\"b""c)", 32, QUOTE_DEQUOTE));
  EXPECT_EQ(R"("")", copied(R"("""")", 32, QUOTE_DEQUOTE));
  EXPECT_EQ(R"(\n\)", copied(R"(\n\)", 32, QUOTE_DEQUOTE)) << "other backslashes stay";
  EXPECT_EQ(R"(a")", copied(R"(a""b)", 3, QUOTE_DEQUOTE)) << "one byte of room for one quote";
}

TEST(Copy, QuotesAreForNotesQuotesAndTrailingBlanks) {
  for (const char* value : {"a;b", ";", "a#", "a\"b", "a ", " "})
    EXPECT_EQ(QUOTE_ENQUOTE, check_enquote(value)) << value;
  for (const char* value : {"", "a", " a", "a b", "a\t", "a'b", "a=b", "[a]", "\\"})
    EXPECT_EQ(QUOTE_NONE, check_enquote(value)) << value;
  EXPECT_EQ(QUOTE_NONE, check_enquote(&" "[1])) << "what is in front of it does not count";
}

}  // namespace
