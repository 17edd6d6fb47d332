// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Uses every operation of the unit the way a C program does.
#include <stddef.h>

#include "ini/ini.h"

static int countKey(const char *Section, const char *Key, const char *Value, void *UserData) {
  (void)Section;
  (void)Key;
  (void)Value;
  ++*(int *)UserData;
  return 1;
}

/* 0, or the number of the first operation that did not do its work. */
int useFromC(const char *Filename) {
  char buffer[INI_BUFFERSIZE];
  int keys = 0;
  float difference;
  if (ini_puts("section", "text", "value", Filename) != 1) return 1;
  if (ini_putl("section", "long", -7L, Filename) != 1) return 2;
  if (ini_putf("section", "float", 1.5f, Filename) != 1) return 3;
  if (ini_putbool("section", "bool", 1, Filename) != 1) return 4;
  if (ini_gets("section", "text", NULL, buffer, INI_BUFFERSIZE, Filename) != 5) return 5;
  if (ini_getl("section", "long", 0L, Filename) != -7L) return 6;
  difference = ini_getf("section", "float", 0.0f, Filename) - 1.5f;
  if (difference < 0.0f || difference > 0.0f) return 7;
  if (ini_getbool("section", "bool", 0, Filename) != 1) return 8;
  if (ini_getsection(0, buffer, INI_BUFFERSIZE, Filename) != 7) return 9;
  if (ini_getkey("section", 0, buffer, INI_BUFFERSIZE, Filename) != 4) return 10;
  if (ini_hassection("section", Filename) != 1) return 11;
  if (ini_haskey("section", "text", Filename) != 1) return 12;
  if (ini_browse(countKey, &keys, Filename) != 1 || keys != 4) return 13;
  return 0;
}
