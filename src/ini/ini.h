// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

/**
 * Reads and writes INI files one value at a time, without heap memory.
 *
 * Each call opens the file, does its work and closes it again; nothing is kept between calls.
 *
 *   [section]              the last "]" of the line closes the name; blanks around it do not count
 *   key = value  ; note    "=" or, in a line without one, ":" separates; ";" and "#" start a note
 *   key = "a;b"            quotes protect ";" and "#"; \" and "" stand for one quote
 *   ; comment  # comment   lines whose first visible byte is ";" or "#"
 *
 * Section and key names compare case-insensitively; only the first section of a name is looked at.
 * Whitespace is any byte from 1 to 32. A line is seen through a buffer of INI_BUFFERSIZE: what is
 * longer counts as several lines. A line ends, as text, at its first NUL byte.
 *
 * Section NULL or "" means the keys before the first header. Sizes are in bytes and include the
 * terminating NUL. To the reading operations a file that cannot be read is like one without
 * sections. Broken contracts (a NULL file name when writing) end the program through an assertion.
 */

/** Size of a line buffer: one read takes at most INI_BUFFERSIZE - 1 bytes of a line. */
#define INI_BUFFERSIZE 512

#ifdef __cplusplus
extern "C" {
#endif

/** Receives one key line of ini_browse(); returns 0 to stop the walk. */
typedef int (*ini_callback)(const char* Section, const char* Key, const char* Value,
                            void* UserData);

/**
 * Copies the value of a key, or DefValue (NULL counts as "") when there is none, into Buffer.
 * Longer text is cut. Returns the length of the string in Buffer; 0 with Buffer left alone when
 * Buffer or Key is NULL or BufferSize is below 1.
 */
int ini_gets(const char* Section, const char* Key, const char* DefValue, char* Buffer,
             int BufferSize, const char* Filename);

/** The value as a number, hexadecimal when its second byte is "x" or "X"; DefValue when absent or
 * empty. */
long ini_getl(const char* Section, const char* Key, long DefValue, const char* Filename);

/**
 * The value as strtod() reads it in the current locale, infinite beyond what a float can hold;
 * DefValue when absent, 0 when not a number.
 */
float ini_getf(const char* Section, const char* Key, float DefValue, const char* Filename);

/** 1 for a value that starts with 1, Y or T, 0 for one with 0, N or F (any case); otherwise
 * DefValue. */
int ini_getbool(const char* Section, const char* Key, int DefValue, const char* Filename);

/**
 * Copies the name of the section with index idx (from 0) and returns its length. Buffer becomes ""
 * when there is none; it is left alone, and 0 returned, when it is NULL, BufferSize is below 1 or
 * idx is negative.
 */
int ini_getsection(int idx, char* Buffer, int BufferSize, const char* Filename);

/** The same for the name of the key with index idx of Section. */
int ini_getkey(const char* Section, int idx, char* Buffer, int BufferSize, const char* Filename);

/** 1 if the section exists, else 0. The unnamed section exists in every file that can be opened. */
int ini_hassection(const char* Section, const char* Filename);

/** 1 if the key exists in the section, else 0. Key must not be NULL. */
int ini_haskey(const char* Section, const char* Key, const char* Filename);

/**
 * Calls Callback for every key line, in the order of the file, until it returns 0. The strings are
 * valid during the call only. Returns 0 if the file cannot be opened or Callback is NULL, else 1.
 */
int ini_browse(ini_callback Callback, void* UserData, const char* Filename);

/**
 * Sets a key, creating file (mode 0600) and section where they are missing. Value NULL deletes the
 * key, Key NULL the whole section; other lines do not change, and the key's own is written anew,
 * without a note. A value is one line: it ends before its first LF, and so that the whole line fits
 * into INI_BUFFERSIZE. A line of unchanged length is patched in place; any other change goes
 * through a temporary file beside the target, which takes its place only when it is complete.
 *
 * Returns 0 when a file could not be opened, read or written: the file is then as it was, as far as
 * the disk allows. Otherwise 1, also when there was nothing to change, and even when the complete
 * new file could not take the old one's place: where that could be removed the new one keeps its
 * temporary name, and where not it is given up.
 */
int ini_puts(const char* Section, const char* Key, const char* Value, const char* Filename);

/** ini_puts() of the number in decimal. */
int ini_putl(const char* Section, const char* Key, long Value, const char* Filename);

/** ini_puts() of the number as "%f" prints it in the current locale. */
int ini_putf(const char* Section, const char* Key, float Value, const char* Filename);

/** ini_puts() of "true" or "false". */
int ini_putbool(const char* Section, const char* Key, int Value, const char* Filename);

#ifdef __cplusplus
}
#endif
