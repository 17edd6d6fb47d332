# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The rules of INI files on whole files as bytes: a second opinion on src/ini.

Written from the rules alone, without a look at the code, and as plainly as Python allows: no
blocks, no file positions, no limits but those that a caller can see. Where the rules leave
something open, the choice is marked with "choice:".

Section None or b"" means the keys before the first header; data None means that there is no file.
"""
import enum
import itertools
import re
import struct

BUFFER_SIZE = 512
LONG_MIN, LONG_MAX = -2 ** 63, 2 ** 63 - 1  # whoever compares with another C sets them
WHITESPACE = bytes(range(1, 33))
LF = b"\n"
QUOTE = ord('"')
ONE_QUOTE = (b'""', b'\\"')  # two bytes that stand for one quote


# ---- Lines

def pieces(data, size=BUFFER_SIZE):
    """Where each line starts, and its bytes: longer ones count as several lines."""
    start = 0
    while start < len(data):
        end = data.find(LF, start, start + size - 1)
        end = end + 1 if end >= 0 else min(start + size - 1, len(data))
        yield start, data[start:end]
        start = end


def as_text(raw):
    """A line as a string: it ends at its first NUL."""
    return raw.split(b"\0", 1)[0]


def header_name(text):
    """The name in a header line; None for any other line."""
    text = text.lstrip(WHITESPACE)
    end = text.rfind(b"]")
    if not text.startswith(b"[") or end < 0:
        return None
    return text[1:end].strip(WHITESPACE)


def split_key(text):
    """The key and the raw value of a line that is no header; None if it holds no key."""
    text = text.lstrip(WHITESPACE)
    if text.startswith((b";", b"#")):
        return None
    for separator in (b"=", b":"):
        key, found, rest = text.partition(separator)
        if found:
            return key.rstrip(WHITESPACE), rest.lstrip(WHITESPACE)
    return None


def same_name(one, other):
    """Whether two names are equal but for the case of ASCII letters."""
    return one.lower() == other.lower()  # bytes.lower() leaves all but ASCII alone


# ---- Values

def cut(text, size):
    """What of a text fits into a buffer of a size."""
    return text[:max(size - 1, 0)]


def dequote(text, size):
    """Undoes the escapes of a quoted value."""
    result, at = bytearray(), 0
    while at < len(text) and len(result) < size - 1:
        escaped = text[at:at + 2] in ONE_QUOTE
        result.append(QUOTE if escaped else text[at])
        at += 2 if escaped else 1
    return bytes(result)


def enquote(text, size):
    """Surrounds a value with quotes, as much of it as leaves room for the closing one."""
    if size < 3:
        return cut(text, size)
    result = bytearray(b'"')
    for byte in text:
        if len(result) >= size - 2:
            break
        if byte == QUOTE:
            if size - 1 - len(result) < 3:
                break
            result += b"\\"
        result.append(byte)
    return bytes(result + b'"')


def clean(raw, size):
    """A raw value without its trailing comment, blanks and quotes, cut to a buffer's size."""
    at, quoted = 0, False
    while at < len(raw) and (quoted or raw[at] not in b";#"):
        if raw[at:at + 2] in ONE_QUOTE:
            at += 2
        else:
            quoted ^= raw[at] == QUOTE
            at += 1
    value = raw[:at].rstrip(WHITESPACE)
    if value.startswith(b'"') and value.endswith(b'"'):
        return dequote(value[1:-1], size)  # choice: a lone quote is an empty value
    return cut(value, size)


# ---- Looking for sections and keys

def section_lines(data, section):
    """Where the header starts and an iterator over what follows it; None if there is none."""
    lines = pieces(data)
    if not section:
        return 0, lines
    for start, raw in lines:
        name = header_name(as_text(raw))
        if name is not None and same_name(name, section):
            return start, lines
    return None


def key_lines(data, section):
    """Start, bytes, key and raw value of every key line of a section."""
    found = None if data is None else section_lines(data, section)
    if found is None:
        return
    for start, raw in found[1]:
        text = as_text(raw)
        if header_name(text) is not None:
            return
        key = split_key(text)
        if key is not None:
            yield start, raw, *key


def find_key(data, section, key):
    """Start, bytes and raw value of the first line with a key; None if there is none."""
    for start, raw, name, rest in key_lines(data, section):
        if same_name(name, key):
            return start, raw, rest
    return None


# ---- Reading. Strings come back as bytes; None is a buffer that is left alone.

def gets(data, section, key, default, size):
    """The value of a key."""
    if size <= 0 or key is None:
        return None
    found = find_key(data, section, key)
    return clean(found[2], size) if found else cut(default or b"", size)


def _leading_number(text, base):
    """strtol()."""
    prefix, digits = (rb"(?:0[xX](?=[0-9a-fA-F]))?", rb"[0-9a-fA-F]+") if base == 16 \
        else (rb"", rb"[0-9]+")
    match = re.match(rb"[ \t-\r]*([+-]?)" + prefix + rb"(" + digits + rb")", text)
    if not match:
        return 0
    number = int(match[2], base)
    return max(LONG_MIN, min(LONG_MAX, -number if match[1] == b"-" else number))


def getl(data, section, key, default):
    """A value as a number."""
    text = gets(data, section, key, b"", 64)
    if not text:
        return default
    return _leading_number(text, 16 if text[1:2] in (b"x", b"X") else 10)


def as_float(number):
    """A number as a float holds it."""
    try:
        return struct.unpack("f", struct.pack("f", number))[0]
    except OverflowError:
        return float("inf") if number > 0 else float("-inf")


def _leading_float(text):
    """strtod() in the C locale."""
    match = re.match(
        rb"[ \t-\r]*([+-]?(?:"
        rb"(0[xX](?:[0-9a-fA-F]+\.?[0-9a-fA-F]*|\.[0-9a-fA-F]+)(?:[pP][+-]?[0-9]+)?)|"
        rb"(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eE][+-]?[0-9]+)?|"
        rb"[iI][nN][fF]|[nN][aA][nN]))", text)
    if not match:
        return 0.0
    number = match[1].decode()
    try:
        return float.fromhex(number) if match[2] else float(number)
    except OverflowError:
        return float("-inf") if number.startswith("-") else float("inf")


def getf(data, section, key, default):
    """A value as a float."""
    if key is None or find_key(data, section, key) is None:
        return default
    return as_float(_leading_float(gets(data, section, key, b"", 64)))


def getbool(data, section, key, default):
    """A value as 0 or 1."""
    first = (gets(data, section, key, b"", 2) or b"").upper()
    if first in (b"1", b"Y", b"T"):
        return 1
    return 0 if first in (b"0", b"N", b"F") else default


def _indexed(names, index, size):
    if size < 1 or index < 0:
        return None
    return cut(next(itertools.islice(names, index, None), b""), size)


def section_names(data):
    """The names of all headers."""
    names = (header_name(as_text(raw)) for _, raw in pieces(data or b""))
    return (name for name in names if name is not None)


def getsection(data, index, size):
    """The name of a section."""
    return _indexed(section_names(data), index, size)


def getkey(data, section, index, size):
    """The name of a key."""
    return _indexed((key for _, _, key, _ in key_lines(data, section)), index, size)


def hassection(data, section):
    """1 if there is such a section."""
    return int(data is not None and section_lines(data, section) is not None)


def haskey(data, section, key):
    """1 if there is such a key."""
    return int(find_key(data, section, key) is not None)


def browse(data, calls):
    """What a callback is given that stops the walk with a certain call."""
    section, start, seen = b"", 0, []
    while data is not None and start < len(data) and len(seen) < calls:
        # Behind the section's name, which lies in the same buffer.
        _, raw = next(pieces(data[start:start + BUFFER_SIZE], BUFFER_SIZE - len(section) - 1))
        start += len(raw)
        name = header_name(as_text(raw))
        if name is not None:
            section = name
            continue
        key = split_key(as_text(raw))
        if key is not None:
            seen.append((section, key[0], clean(key[1], BUFFER_SIZE)))
    return seen


# ---- Writing

class Way(enum.Enum):
    """How a change reaches the disk."""
    NO_FILE = "there was and is no file"
    CREATED = "the file is new"
    UNTOUCHED = "not opened for writing"
    PATCHED = "changed in place"
    REPLACED = "another file took its place"
    OPEN = "the rules say nothing"


def key_line(key, value):
    """A key and its value as they are written, at most as long as a line can be."""
    value = value.split(LF, 1)[0]  # a value is one line
    # choice: what is judged is as much of the value as a line could hold at most.
    seen = value[:BUFFER_SIZE - 1]
    quoted = any(byte in b'";#' for byte in seen) or seen.endswith(b" ")
    key = cut(key, BUFFER_SIZE - 3)  # choice: room for "=", LF and NUL stays
    room = BUFFER_SIZE - len(key) - 2
    return key + b"=" + (enquote(value, room) if quoted else cut(value, room)) + LF


def header_line(section):
    """A header as it is written; choice: however long the name is."""
    return b"[" + section + b"]" + LF if section else b""


def puts(data, section, key, value):
    """The file afterwards, and the way in which it got there."""
    if data is None:
        if key is None or value is None:
            return None, Way.NO_FILE
        return header_line(section) + key_line(key, value), Way.CREATED
    if key is None:
        return _without_section(data, section)
    found = find_key(data, section, key)
    if not found:
        if value is None:
            return data, Way.UNTOUCHED
        return _with_new_key(data, section, key_line(key, value)), Way.REPLACED
    start, raw, rest = found
    if value is not None and clean(rest, BUFFER_SIZE) == value:
        return data, Way.UNTOUCHED
    new = b"" if value is None else key_line(key, value)
    way = Way.REPLACED
    if len(new) == len(raw):
        way = Way.PATCHED if raw.endswith(LF) else Way.OPEN
    return data[:start] + new + data[start + len(raw):], way


def _next_header(data, lines):
    for start, raw in lines:
        if header_name(as_text(raw)) is not None:
            return start
    return len(data)


def _without_section(data, section):
    found = section_lines(data, section)
    if found is None:
        return data, Way.OPEN
    return data[:found[0]] + data[_next_header(data, found[1]):], Way.OPEN


def _with_new_key(data, section, line):
    found = section_lines(data, section)
    if found is None:  # choice: an empty file does not end in LF, so it gets one
        return data + (b"" if data.endswith(LF) else LF) + header_line(section) + line
    at = _next_header(data, found[1])
    if at == len(data) and data and not data.endswith(LF):
        line = LF + line  # choice: none in an empty file
    return data[:at] + line + data[at:]
