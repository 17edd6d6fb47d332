// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "ini/ini.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "base/open_private.h"
#include "ini/text.h"

using namespace ini;

namespace {

// ---- Lines ------------------------------------------------------------------------------------

/** The name in a section header, or a view without data for any other line. */
std::string_view header_name(char* line) {
  char* sp = skip_leading(line);
  if (*sp != '[') return {};
  char* ep = std::strrchr(sp, ']');
  if (ep == NULL) return {};
  assert(ep != NULL && *ep == ']');
  return trimmed(sp + 1, ep);
}

bool is_header(char* line) { return header_name(line).data() != NULL; }

bool is_section(char* line, const char* Section) {
  const std::string_view name = header_name(line);
  return name.data() != NULL && same_name(name, Section);
}

bool is_unnamed(const char* Section) { return Section == NULL || *Section == '\0'; }

/** Where the separator of a key line stands; NULL for a comment or a line without one. */
char* find_separator(char* line) {
  const char first = *skip_leading(line);
  if (first == ';' || first == '#') return NULL;
  char* ep = std::strchr(line, '=');
  return ep != NULL ? ep : std::strchr(line, ':');
}

/** Builds the line of a key, LF included, and returns its length, at most INI_BUFFERSIZE - 1. */
std::size_t build_key_line(char* line, const char* Key, const char* Value) {
  assert(Key != NULL && Value != NULL);
  char first_line[INI_BUFFERSIZE];
  const std::size_t extent = std::strcspn(Value, "\n");
  ini_strncpy(first_line, Value, extent < INI_BUFFERSIZE ? extent + 1 : INI_BUFFERSIZE, QUOTE_NONE);

  constexpr std::size_t AFTER_KEY = sizeof "=\n";
  ini_strncpy(line, Key, INI_BUFFERSIZE - AFTER_KEY, QUOTE_NONE);
  std::size_t length = std::strlen(line);
  line[length++] = '=';
  ini_strncpy(line + length, first_line, INI_BUFFERSIZE - 1 - length, check_enquote(first_line));
  length += std::strlen(line + length);
  line[length++] = '\n';
  line[length] = '\0';
  return length;
}

// ---- Files ------------------------------------------------------------------------------------

/** How often an operation is tried that fails, and not because there is no such file. */
constexpr int TRIES = 2;

/** A keyfile is read and written in one piece; long files lose by smaller buffers. */
constexpr std::size_t STREAM_BUFFERSIZE = 32768;

/** How a stream will be used. */
enum class access_order {
  SEQUENTIAL,
  SEEKING,  // back and forth in the buffer; one more system call when it is opened
};

/** A buffered file whose buffer is on the stack, like everything else here. */
class stream {
 public:
  FILE* file = NULL;

  /** Takes over a descriptor; a negative one leaves file NULL and errno alone. */
  stream(int opened, const char* mode, access_order order = access_order::SEQUENTIAL)
      : descriptor(opened) {
    if (descriptor < 0) return;
    if (order == access_order::SEQUENTIAL) {
      // Unlike fdopen() this asks for nothing that openPrivate() has decided.
      file = fopencookie(this, mode, {read_bytes, write_bytes, NULL, close_file});
    } else {
      file = fdopen(descriptor, mode);
    }
    if (file == NULL) {
      ::close(descriptor);
      return;
    }
    (void)setvbuf(file, buffer, _IOFBF, sizeof buffer);
    // Told where it is, stdio seeks in the buffer without a system call.
    if (order == access_order::SEEKING) (void)std::fseek(file, 0, SEEK_SET);
  }
  stream(const stream&) = delete;
  stream& operator=(const stream&) = delete;
  ~stream() { close(); }

  bool failed() const { return std::ferror(file) != 0; }

  /** Writes out what is buffered. Returns whether all went well since the file was opened. */
  bool close() {
    if (file == NULL) return false;
    const bool complete = !failed();
    const bool closed = std::fclose(file) == 0;
    file = NULL;
    return closed && complete;
  }

 private:
  static ssize_t read_bytes(void* cookie, char* bytes, std::size_t size) {
    auto& self = *static_cast<stream*>(cookie);
    if (self.ended) return 0;
    const ssize_t length = read(self.descriptor, bytes, size);
    self.ended = length >= 0 && static_cast<std::size_t>(length) < size;
    return length;
  }

  static ssize_t write_bytes(void* cookie, const char* bytes, std::size_t size) {
    const auto& self = *static_cast<stream*>(cookie);
    std::size_t written = 0;
    while (written < size) {
      const ssize_t length = write(self.descriptor, bytes + written, size - written);
      if (length <= 0) break;
      written += static_cast<std::size_t>(length);
    }
    return static_cast<ssize_t>(written);
  }

  static int close_file(void* cookie) { return ::close(static_cast<stream*>(cookie)->descriptor); }

  int descriptor;
  bool ended = false;  // a read that is cut short is the last one that gets anything
  char buffer[STREAM_BUFFERSIZE];
};

/**
 * The size of a file, so that no read has to find its end; LONG_MAX if it is not known, -1 if
 * there is no file, or if offsets cannot count it, which can be where a long has 32 bits.
 */
long size_of(FILE* file) {
  if (file == NULL) return -1;
  struct stat status {};
  if (fstat(fileno(file), &status) != 0 || status.st_size == 0) return LONG_MAX;
  const long size = static_cast<long>(status.st_size);
  return size == status.st_size ? size : -1;
}

struct input : stream {
  explicit input(const char* Filename, access_order order = access_order::SEQUENTIAL)
      : stream(openPrivate(Filename, O_RDONLY), "rb", order) {}
};

/** Walks over the lines of a file, in the place that they were read to. */
class line_reader {
 public:
  FILE* file;
  long start = 0;  // offset of the current line in the file
  int length = 0;  // its bytes, LF included; 0 past the end
  long end;        // offset of the end of the file; LONG_MAX as long as it is not known

  explicit line_reader(FILE* source, long size = LONG_MAX) : file(source), end(size) {}
  line_reader(const line_reader&) = delete;
  line_reader& operator=(const line_reader&) = delete;
  ~line_reader() = default;

  bool next() {
    if (terminated) *behind() = held;
    terminated = false;
    line += length;
    start += length;
    length = length_from(line);
    if (length == 0) {
      char* known = refill();
      length = length_from(known);
      // As much as can be held at a time, or the end of the file, ends a line too.
      if (length == 0) length = static_cast<int>(filled - line);
    }
    return length > 0;
  }

  /** Goes on to the next line whose first visible byte is "[". */
  bool next_header() {
    while (next()) {
      if (first() == '[') return true;
      // One look at all that was read passes over many lines: up to the one that holds a "[".
      const auto rest = static_cast<std::size_t>(filled - behind());
      const void* bracket = std::memchr(behind(), '[', rest);
      const char* limit = bracket != NULL ? static_cast<const char*>(bracket) : filled;
      const void* newline = memrchr(behind(), '\n', static_cast<std::size_t>(limit - behind()));
      if (newline != NULL) length = static_cast<int>(static_cast<const char*>(newline) + 1 - line);
    }
    return false;
  }

  /** The first byte of the line that shows, or any one that does not. Cheaper than the text. */
  char first() const {
    const char* p = line;
    while (p + 1 < line + length && is_space(*p)) ++p;
    return *p;
  }

  /** The line as a string, which may be written to. */
  char* text() {
    if (!terminated) held = std::exchange(*behind(), '\0');
    terminated = true;
    return line;
  }

  /** Reads from a place on, as often as wanted; the walk over the lines goes on all the same. */
  std::size_t read_at(long offset, char* block, std::size_t size) {
    if (!seek(offset)) return 0;
    const std::size_t got = fread_unlocked(block, 1, size, file);
    at += static_cast<long>(got);
    return got;
  }

 private:
  static constexpr std::ptrdiff_t CAPACITY = INI_BUFFERSIZE - 1;

  char* behind() { return line + length; }

  /** Offset of what has not been read yet. */
  long position() const { return start + (filled - line); }

  bool seek(long offset) {
    char skipped[INI_BUFFERSIZE];
    const long ahead = offset - at;
    at = offset;
    // A short way is read over: a seek is a system call even within the buffer.
    if (ahead < 0 || ahead > INI_BUFFERSIZE) return std::fseek(file, offset, SEEK_SET) == 0;
    const auto size = static_cast<std::size_t>(ahead);
    return size == 0 || fread_unlocked(skipped, 1, size, file) == size;
  }

  /** Bytes up to the first LF from a place on; 0 if there is none. */
  int length_from(const char* place) const {
    const auto* newline = static_cast<const char*>(
        std::memchr(place, '\n', static_cast<std::size_t>(filled - place)));
    return newline != NULL ? static_cast<int>(newline + 1 - line) : 0;
  }

  /** Moves what is there of the line to the front and reads on. Returns where that begins. */
  char* refill() {
    const std::ptrdiff_t kept = filled - line;
    std::memmove(bytes, line, static_cast<std::size_t>(kept));
    line = bytes;
    filled = bytes + kept;
    const auto wanted = static_cast<std::size_t>(std::min<long>(CAPACITY - kept, end - position()));
    const std::size_t got = wanted > 0 ? read_at(position(), filled, wanted) : 0;
    filled += got;
    if (got < wanted) end = position();
    return bytes + kept;
  }

  char bytes[INI_BUFFERSIZE];
  char* line = bytes;
  char* filled = bytes;     // end of what was read
  long at = 0;              // offset where the stream stands
  bool terminated = false;  // whether a NUL stands behind the line, in place of the byte held
  char held = '\0';
};

/** Reads on up to the header of a section; the unnamed one starts where the file does. */
bool find_section(line_reader& line, const char* Section) {
  if (is_unnamed(Section)) return true;
  while (line.next_header())
    if (is_section(line.text(), Section)) return true;
  return false;
}

/** The same for the section with an index, from 0. */
bool find_section(line_reader& line, int idx) {
  while (line.next_header())
    if (is_header(line.text()) && idx-- == 0) return true;
  return false;
}

/** Reads on to the next key line of the section. Returns its separator, or NULL at the end. */
char* next_key(line_reader& line) {
  while (line.next() && !is_header(line.text())) {
    char* ep = find_separator(line.text());
    if (ep == NULL) continue;
    assert(*ep == '=' || *ep == ':');
    return ep;
  }
  return NULL;
}

/** Copies the value behind a separator, without its note and quotes. */
void copy_value(char* separator, char* Buffer, std::size_t BufferSize) {
  quote_option quotes = QUOTE_NONE;
  const char* value = cleanstring(skip_leading(separator + 1), &quotes);
  ini_strncpy(Buffer, value, BufferSize, quotes);
}

/**
 * Finds a key by name, copying its value, or (Key NULL, idxKey from 0) by index, copying its name.
 * On success the reader stands on the key's line, whose text is used up.
 */
bool getkeystring(line_reader& line, const char* Section, const char* Key, int idxKey, char* Buffer,
                  int BufferSize) {
  if (!find_section(line, Section)) return false;
  assert(Key != NULL || idxKey >= 0);
  const auto capacity = static_cast<std::size_t>(BufferSize);
  while (char* ep = next_key(line)) {
    const std::string_view name = trimmed(line.text(), ep);
    if (Key == NULL && idxKey-- == 0) {
      ini_strncpy(Buffer, name.data(), std::min(name.size() + 1, capacity), QUOTE_NONE);
      return true;
    }
    if (Key != NULL && same_name(name, Key)) {
      copy_value(ep, Buffer, capacity);
      return true;
    }
  }
  return false;
}

bool is_missing(int error) { return error == ENOENT || error == ENOTDIR; }

bool read_value(const char* Section, const char* Key, char* Buffer, int BufferSize,
                const char* Filename) {
  // To the caller a failure looks like a key that is not there, and what is shown instead may be
  // saved: a failure that passes is not to be seen.
  for (int tries = 0; tries < TRIES; ++tries) {
    const input source(Filename);
    if (source.file == NULL && is_missing(errno)) return false;
    if (source.file == NULL) continue;
    line_reader line(source.file);
    if (getkeystring(line, Section, Key, -1, Buffer, BufferSize)) return true;
    if (!source.failed()) return false;
  }
  return false;
}

// ---- Changes ----------------------------------------------------------------------------------

/**
 * Copies a source file to a target. Lines are read one by one; those to keep are gathered into a
 * pending block, which is read once more and copied in one piece when it would grow too long.
 */
struct copier {
  line_reader line;
  FILE* target = NULL;
  long mark = 0;        // offset in the source of the pending block
  int pending = 0;      // its bytes
  bool failed = false;  // whether the source did not give a block a second time

  void keep_line() {
    if (pending + line.length > INI_BUFFERSIZE - 1) cache_flush(&pending);
    pending += line.length;
  }

  /** Copies the pending block. Returns whether it ended in LF. */
  bool cache_flush(int* size) {
    assert(*size <= INI_BUFFERSIZE);
    if (*size == 0) return false;
    char block[INI_BUFFERSIZE];
    const int pos = std::min(*size, INI_BUFFERSIZE - 1);
    assert(pos > 0 && pos <= INI_BUFFERSIZE);
    const auto length = static_cast<std::size_t>(pos);
    failed |= line.read_at(mark, block, length) != length;
    fwrite_unlocked(block, 1, length, target);
    mark += pos;
    *size = 0;
    return block[length - 1] == '\n';
  }

  /** Copies all that follows an offset. */
  void copy_rest(long offset) {
    char block[INI_BUFFERSIZE];
    while (offset < line.end) {
      const auto wanted = std::min<long>(sizeof block, line.end - offset);
      const auto length = line.read_at(offset, block, static_cast<std::size_t>(wanted));
      if (length == 0) break;
      fwrite_unlocked(block, 1, length, target);
      offset += static_cast<long>(length);
    }
  }

  void write_header(const char* Section) const {
    if (!is_unnamed(Section)) std::fprintf(target, "[%s]\n", Section);
  }

  void write_key(const char* Key, const char* Value) const {
    char text[INI_BUFFERSIZE];
    fwrite_unlocked(text, 1, build_key_line(text, Key, Value), target);
  }
};

/** Copies all but the section; the copier's line is its header, if it has one. */
void copy_without_section(copier& copy) {
  line_reader& line = copy.line;
  copy.cache_flush(&copy.pending);
  while (line.next() && !is_header(line.text())) continue;
  copy.copy_rest(line.start);
}

/** Copies the rest of the file, from below the section's header, with the key set or deleted. */
void copy_with_key(copier& copy, const char* Key, const char* Value) {
  line_reader& line = copy.line;
  while (line.next()) {
    const bool header = is_header(line.text());
    char* ep = header ? NULL : find_separator(line.text());
    if (header || (ep != NULL && same_name(trimmed(line.text(), ep), Key))) {
      copy.cache_flush(&copy.pending);
      if (Value != NULL) copy.write_key(Key, Value);
      copy.copy_rest(header ? line.start : line.start + line.length);
      return;
    }
    copy.keep_line();
  }
  const bool ended_in_lf = copy.cache_flush(&copy.pending);
  if (Value == NULL) return;
  if (!ended_in_lf && line.start > 0) std::fputc('\n', copy.target);
  copy.write_key(Key, Value);
}

void copy_changed(copier& copy, const char* Section, const char* Key, const char* Value) {
  line_reader& line = copy.line;
  bool found = is_unnamed(Section);
  while (!found && line.next()) {
    found = line.first() == '[' && is_section(line.text(), Section);
    if (!found || Key != NULL) copy.keep_line();  // not the header of a section to delete
  }
  if (found && Key == NULL) return copy_without_section(copy);
  if (found) return copy_with_key(copy, Key, Value);

  const bool ended_in_lf = copy.cache_flush(&copy.pending);
  if (Key == NULL || Value == NULL) return;
  if (!ended_in_lf) std::fputc('\n', copy.target);  // an empty file does not end in LF either
  copy.write_header(Section);
  copy.write_key(Key, Value);
}

/** Creates a file that is not there yet; -1, with errno set, if it is. */
int create_private(const char* Filename) {
  return openPrivate(Filename, O_WRONLY | O_CREAT | O_EXCL);
}

/** The name with "~" as its last byte; a name that has it already gets one more. */
bool name_temporary(char (&temporary)[PATH_MAX], const char* Filename) {
  const std::size_t length = std::strlen(Filename);
  if (length == 0 || length + 1 >= sizeof temporary || Filename[length - 1] == '/') return false;
  const std::size_t last = Filename[length - 1] == '~' ? length : length - 1;
  std::memcpy(temporary, Filename, last);
  temporary[last] = '~';
  temporary[last + 1] = '\0';
  return true;
}

/**
 * Gives the temporary file the name of the one that it takes the place of. Where it cannot be moved
 * any more it is copied: the next value is written under both names again.
 */
void replace(const char* temporary, const char* Filename) {
  (void)std::remove(Filename);
  if (std::rename(temporary, Filename) == 0) return;
  stream target(create_private(Filename), "wb");
  bool dispensable = target.file == NULL && errno == EEXIST;  // the old file could not be removed
  input source(temporary, access_order::SEEKING);
  const long size = size_of(source.file);
  if (target.file != NULL && size >= 0) {
    copier copy{line_reader(source.file, size), target.file};
    copy.copy_rest(0);
    dispensable = source.close() && !copy.failed && target.close();
  }
  if (dispensable) (void)unlink(temporary);
}

/** Rewrites the file through a temporary one. A failure leaves everything as it was. */
bool rewrite(const char* Section, const char* Key, const char* Value, const char* Filename) {
  char temporary[PATH_MAX];
  if (!name_temporary(temporary, Filename)) return false;
  int descriptor = create_private(temporary);
  // What stands under that name is a leftover, perhaps one that others can read or a link.
  if (descriptor < 0 && errno == EEXIST && unlink(temporary) == 0)
    descriptor = create_private(temporary);
  stream target(descriptor, "wb");
  if (target.file == NULL) return false;

  input source(Filename, access_order::SEEKING);
  bool complete = false;
  const long size = size_of(source.file);
  if (size >= 0) {
    copier copy{line_reader(source.file, size), target.file};
    copy_changed(copy, Section, Key, Value);
    complete = source.close() && !copy.failed;
  }
  if (!target.close() || !complete) {
    (void)unlink(temporary);
    return false;
  }
  replace(temporary, Filename);
  return true;
}

bool create(const char* Section, const char* Key, const char* Value, const char* Filename) {
  stream target(openPrivate(Filename, O_WRONLY | O_CREAT | O_TRUNC), "wb");
  if (target.file == NULL) return false;
  copier copy{line_reader(NULL), target.file};
  copy.write_header(Section);
  copy.write_key(Key, Value);
  if (target.close()) return true;
  // What was created may stand at the end of a link, which was there before.
  char created[PATH_MAX];
  if (realpath(Filename, created) != NULL) (void)unlink(created);
  return false;
}

/**
 * Overwrites a line in place. Not through a stream: one call writes it whole, and when that fails
 * the old line is put back.
 */
bool patch(const char* Filename, long offset, const char* line, std::size_t length) {
  const int descriptor = openPrivate(Filename, O_RDWR);
  if (descriptor < 0) return false;
  char old[INI_BUFFERSIZE];
  const auto size = static_cast<ssize_t>(length);
  bool patched = pread(descriptor, old, length, offset) == size;
  if (patched && pwrite(descriptor, line, length, offset) != size) {
    patched = false;
    if (pwrite(descriptor, old, length, offset) != size) errno = EIO;
  }
  return close(descriptor) == 0 && patched;
}

bool put(const char* Section, const char* Key, const char* Value, const char* Filename) {
  input source(Filename);
  if (source.file == NULL) {
    // A file that is there, but cannot be read, must not be taken for a missing one.
    if (!is_missing(errno)) return false;
    return Key == NULL || Value == NULL || create(Section, Key, Value, Filename);
  }

  if (Key != NULL) {
    char stored[INI_BUFFERSIZE];
    line_reader line(source.file);
    const bool found = getkeystring(line, Section, Key, -1, stored, sizeof stored);
    if (!source.close()) return false;
    if (Value == NULL && !found) return true;
    if (Value != NULL && found) {
      if (std::strcmp(stored, Value) == 0) return true;
      char text[INI_BUFFERSIZE];
      const std::size_t length = build_key_line(text, Key, Value);
      if (length == static_cast<std::size_t>(line.length))
        return patch(Filename, line.start, text, length);
    }
  }
  return rewrite(Section, Key, Value, Filename);
}

}  // namespace

// ---- Operations -------------------------------------------------------------------------------

int ini_gets(const char* Section, const char* Key, const char* DefValue, char* Buffer,
             int BufferSize, const char* Filename) {
  if (Buffer == NULL || BufferSize <= 0 || Key == NULL) return 0;
  if (!read_value(Section, Key, Buffer, BufferSize, Filename)) {
    const char* text = DefValue != NULL ? DefValue : "";
    ini_strncpy(Buffer, text, static_cast<std::size_t>(BufferSize), QUOTE_NONE);
  }
  return static_cast<int>(std::strlen(Buffer));
}

long ini_getl(const char* Section, const char* Key, long DefValue, const char* Filename) {
  char text[64];
  if (ini_gets(Section, Key, "", text, sizeof text, Filename) == 0) return DefValue;
  const bool hexadecimal = std::toupper(static_cast<unsigned char>(text[1])) == 'X';
  return std::strtol(text, NULL, hexadecimal ? 16 : 10);
}

float ini_getf(const char* Section, const char* Key, float DefValue, const char* Filename) {
  char text[64];
  if (Key == NULL || !read_value(Section, Key, text, sizeof text, Filename)) return DefValue;
  return static_cast<float>(std::strtod(text, NULL));
}

int ini_getbool(const char* Section, const char* Key, int DefValue, const char* Filename) {
  char text[2] = "";
  ini_gets(Section, Key, "", text, sizeof text, Filename);
  switch (std::toupper(static_cast<unsigned char>(text[0]))) {
    case '1':
    case 'Y':
    case 'T':
      return 1;
    case '0':
    case 'N':
    case 'F':
      return 0;
    default:
      return DefValue;
  }
}

int ini_getsection(int idx, char* Buffer, int BufferSize, const char* Filename) {
  if (Buffer == NULL || BufferSize < 1 || idx < 0) return 0;
  *Buffer = '\0';
  const input source(Filename);
  line_reader line(source.file);
  if (source.file != NULL && find_section(line, idx)) {
    const std::string_view name = header_name(line.text());
    const auto capacity = static_cast<std::size_t>(BufferSize);
    ini_strncpy(Buffer, name.data(), std::min(name.size() + 1, capacity), QUOTE_NONE);
  }
  return static_cast<int>(std::strlen(Buffer));
}

int ini_getkey(const char* Section, int idx, char* Buffer, int BufferSize, const char* Filename) {
  if (Buffer == NULL || BufferSize < 1 || idx < 0) return 0;
  *Buffer = '\0';
  const input source(Filename);
  line_reader line(source.file);
  if (source.file != NULL) getkeystring(line, Section, NULL, idx, Buffer, BufferSize);
  return static_cast<int>(std::strlen(Buffer));
}

int ini_hassection(const char* Section, const char* Filename) {
  const input source(Filename);
  line_reader line(source.file);
  return source.file != NULL && find_section(line, Section);
}

int ini_haskey(const char* Section, const char* Key, const char* Filename) {
  char scratch[32];
  return read_value(Section, Key, scratch, sizeof scratch, Filename);
}

int ini_browse(ini_callback Callback, void* UserData, const char* Filename) {
  const input source(Filename);
  if (source.file == NULL || Callback == NULL) return 0;
  // The section's name and, behind it, the line: a long name leaves less room for the line.
  char buffer[INI_BUFFERSIZE] = "";
  std::size_t used = 1;
  while (fgets_unlocked(buffer + used, static_cast<int>(sizeof buffer - used), source.file)) {
    char* line = buffer + used;
    if (const std::string_view name = header_name(line); name.data() != NULL) {
      ini_strncpy(buffer, name.data(), name.size() + 1, QUOTE_NONE);
      used = name.size() + 1;
      continue;
    }
    char* ep = find_separator(line);
    if (ep == NULL) continue;
    char* key = skip_leading(line);
    copy_value(ep, ep + 1, sizeof buffer - static_cast<std::size_t>(ep + 1 - buffer));
    *skip_trailing(ep, key) = '\0';
    if (Callback(buffer, key, ep + 1, UserData) == 0) break;
  }
  return 1;
}

int ini_puts(const char* Section, const char* Key, const char* Value, const char* Filename) {
  assert(Filename != NULL);
  for (int tries = 0; tries < TRIES; ++tries)
    if (put(Section, Key, Value, Filename)) return 1;
  return 0;
}

int ini_putl(const char* Section, const char* Key, long Value, const char* Filename) {
  char text[32];
  std::snprintf(text, sizeof text, "%ld", Value);
  return ini_puts(Section, Key, text, Filename);
}

int ini_putf(const char* Section, const char* Key, float Value, const char* Filename) {
  char text[64];
  std::snprintf(text, sizeof text, "%f", static_cast<double>(Value));
  return ini_puts(Section, Key, text, Filename);
}

int ini_putbool(const char* Section, const char* Key, int Value, const char* Filename) {
  return ini_puts(Section, Key, Value != 0 ? "true" : "false", Filename);
}
