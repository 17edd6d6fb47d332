// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ini/ini_fixture.h"

using namespace std::string_literals;

namespace {

using Strings = std::vector<std::string>;

// ---- Names by index

class NamesByIndex : public IniTest {
 protected:
  std::string buffer = std::string(15, '~');

  /** The name of a section or, in one, of a key; the length must be right. */
  std::string section(int index, int size = 16) {
    return checked(ini_getsection(index, buffer.data(), size, file.c_str()));
  }
  std::string key(const char* section, int index, int size = 16) {
    return checked(ini_getkey(section, index, buffer.data(), size, file.c_str()));
  }

 private:
  std::string checked(int length) const {
    const std::string name = buffer.c_str();
    EXPECT_EQ(length, static_cast<int>(name.size()));
    return name;
  }
};

TEST_F(NamesByIndex, AreThoseOfEverySectionInOrder) {
  writeBytes(file, "x=1\n[ One ]\nk=1\n;[no]\n[two]\n[]\n[one]\n");
  int index = 0;
  for (const char* name : {"One", "two", "", "one", ""}) EXPECT_EQ(name, section(index++));
}

TEST_F(NamesByIndex, AreThoseOfEveryKeyInOrder) {
  writeBytes(file, "top=0\n[s]\n Key One = 1\n;no=2\nplain\ntwo:2\n=3\nfour=4\n[t]\nfive=5\n");
  int index = 0;
  for (const char* name : {"Key One", "two", "", "four", ""}) EXPECT_EQ(name, key("s", index++));
  EXPECT_EQ("top", key(nullptr, 0));
  EXPECT_EQ("", key("", 1));
  EXPECT_EQ("", key("absent", 0));
}

TEST_F(NamesByIndex, AreCutToTheBuffer) {
  writeBytes(file, "[section]\nname=1\n");
  EXPECT_EQ("", section(0, 1));
  EXPECT_EQ("sec", section(0, 4));
  EXPECT_EQ("n", key("section", 0, 2));
  EXPECT_EQ("c", std::string(&buffer[2])) << "behind the end nothing is touched";
}

TEST_F(NamesByIndex, ComeFromABlockWithoutAnEnd) {
  writeBytes(file, "[section]\nname=" + std::string(600, 'v') + "\n");
  char name[16];  // above what the operation has on the stack, unlike the buffer of the others
  EXPECT_EQ(7, ini_getsection(0, name, sizeof name, file.c_str()));
  EXPECT_STREQ("section", name);
  EXPECT_EQ(4, ini_getkey("section", 0, name, sizeof name, file.c_str()));
  EXPECT_STREQ("name", name);
}

TEST_F(NamesByIndex, NeedABufferAndAnIndex) {
  writeBytes(file, "[s]\nk=v\n");
  const std::string untouched = buffer;
  EXPECT_EQ(0, ini_getsection(0, nullptr, 8, file.c_str()));
  EXPECT_EQ(0, ini_getsection(0, buffer.data(), 0, file.c_str()));
  EXPECT_EQ(0, ini_getsection(-1, buffer.data(), 16, file.c_str()));
  EXPECT_EQ(0, ini_getkey("s", 0, nullptr, 8, file.c_str()));
  EXPECT_EQ(0, ini_getkey("s", 0, buffer.data(), 0, file.c_str()));
  EXPECT_EQ(0, ini_getkey("s", -1, buffer.data(), 16, file.c_str()));
  EXPECT_EQ(untouched, buffer);
}

TEST_F(NamesByIndex, AreEmptyInAMissingFile) {
  EXPECT_EQ("", section(0));
  buffer.assign(15, '~');
  EXPECT_EQ("", key("s", 0));
}

// ---- Existence

using SectionsAndKeys = IniTest;

TEST_F(SectionsAndKeys, ExistOrNot) {
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

TEST_F(SectionsAndKeys, DoNotExistInAMissingFile) {
  EXPECT_EQ(0, ini_hassection("s", file.c_str()));
  EXPECT_EQ(0, ini_hassection(nullptr, file.c_str()));
  EXPECT_EQ(0, ini_haskey("s", "k", file.c_str()));
  EXPECT_TRUE(directory.names().empty());
}

// ---- Walking

class Walk : public IniTest {
 protected:
  Strings lines;
  std::size_t limit = 100;

  int walk() { return ini_browse(visit, this, file.c_str()); }

 private:
  static int visit(const char* section, const char* key, const char* value, void* data) {
    Walk& self = *static_cast<Walk*>(data);
    self.lines.push_back("["s + section + "] " + key + "=" + value);
    return self.lines.size() < self.limit ? 1 : 0;
  }
};

TEST_F(Walk, VisitsEveryKeyLineInOrder) {
  writeBytes(file,
             "top = 0 ; note\n[ One ]\n a : \"x;y\" # note\n; b=1\nplain\n\nc=\r\n[two]\ne=f=g\n"
             "[One]\na=\"p\"\"q\"\n[]\nz=1");
  EXPECT_EQ(1, walk());
  EXPECT_EQ(
      (Strings{"[] top=0", "[One] a=x;y", "[One] c=", "[two] e=f=g", "[One] a=p\"q", "[] z=1"}),
      lines);
}

TEST_F(Walk, StopsWhenToldTo) {
  writeBytes(file, "a=1\nb=2\nc=3\n");
  limit = 2;
  EXPECT_EQ(1, walk());
  EXPECT_EQ((Strings{"[] a=1", "[] b=2"}), lines);
}

TEST_F(Walk, NeedsAFileAndACallback) {
  EXPECT_EQ(0, walk());
  writeBytes(file, "");
  EXPECT_EQ(1, walk());
  EXPECT_TRUE(lines.empty());
  writeBytes(file, "a=1\n");
  EXPECT_EQ(0, ini_browse(nullptr, nullptr, file.c_str()));
}

TEST_F(Walk, SharesItsBufferBetweenSectionAndLine) {
  const std::string name(300, 'n');
  writeBytes(file, "[" + name + "]\nk=" + std::string(400, 'v') + "\nlast=1\n");
  EXPECT_EQ(1, walk());
  constexpr std::size_t ROOM = 512 - 301 - 1;  // the name with its NUL, and the line's NUL
  EXPECT_EQ((Strings{"[" + name + "] k=" + std::string(ROOM - 2, 'v'), "[" + name + "] last=1"}),
            lines);
}

TEST_F(Walk, GoesOnByTwoBytesBehindTheLongestSectionName) {
  writeBytes(file, "[" + std::string(508, 'n') + "]\nab=12\n");
  EXPECT_EQ(1, walk());
  EXPECT_EQ(Strings{"[" + std::string(508, 'n') + "] =1"}, lines) << "two bytes at a time";
}

}  // namespace
