// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <type_traits>

#include "ini/ini.h"
#include "support/bytes.h"
#include "support/files.h"

extern "C" int useFromC(const char* Filename);

namespace {

using Text = const char*;

template <auto OPERATION, typename Signature>
constexpr bool HAS_SIGNATURE = std::is_same_v<decltype(OPERATION), Signature*>;

static_assert(INI_BUFFERSIZE == 512);
static_assert(std::is_same_v<ini_callback, int (*)(Text, Text, Text, void*)>);
static_assert(HAS_SIGNATURE<&::ini_gets, int(Text, Text, Text, char*, int, Text)>);
static_assert(HAS_SIGNATURE<&::ini_getl, long(Text, Text, long, Text)>);
static_assert(HAS_SIGNATURE<&::ini_getf, float(Text, Text, float, Text)>);
static_assert(HAS_SIGNATURE<&::ini_getbool, int(Text, Text, int, Text)>);
static_assert(HAS_SIGNATURE<&::ini_getsection, int(int, char*, int, Text)>);
static_assert(HAS_SIGNATURE<&::ini_getkey, int(Text, int, char*, int, Text)>);
static_assert(HAS_SIGNATURE<&::ini_hassection, int(Text, Text)>);
static_assert(HAS_SIGNATURE<&::ini_haskey, int(Text, Text, Text)>);
static_assert(HAS_SIGNATURE<&::ini_browse, int(ini_callback, void*, Text)>);
static_assert(HAS_SIGNATURE<&::ini_puts, int(Text, Text, Text, Text)>);
static_assert(HAS_SIGNATURE<&::ini_putl, int(Text, Text, long, Text)>);
static_assert(HAS_SIGNATURE<&::ini_putf, int(Text, Text, float, Text)>);
static_assert(HAS_SIGNATURE<&::ini_putbool, int(Text, Text, int, Text)>);

TEST(Interface, WorksFromC) {
  const TemporaryDirectory directory;
  EXPECT_EQ(0, useFromC(directory.file("c.ini").c_str()));
  EXPECT_BYTES_EQ("[section]\ntext=value\nlong=-7\nfloat=1.500000\nbool=true\n",
                  readBytes(directory.file("c.ini")));
}

}  // namespace
