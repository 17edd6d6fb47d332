# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What a power cut leaves: a disk that keeps nothing but what was flushed to it."""
import codecs
import os
import re

_CALL = re.compile(r"(\w+)\((.*)\)\s+= (-?\d+)")
_STRING = re.compile(r'"((?:[^"\\]|\\.)*)"')
_DESCRIPTOR = re.compile(r"^(\d+)<")


def _strings(arguments):
    return [codecs.escape_decode(text.encode())[0] for text in _STRING.findall(arguments)]


class Disk:
    """Files as a running system sees them, and as they are found after a power cut.

    Is told the system calls of a program, as lines of strace with full strings. The bytes of a file
    last once it is flushed, the names in the folder once that is; nothing lasts by itself.
    """

    def __init__(self, folder):
        self._folder = folder
        self._names = {}  # of files: their bytes, in a list of one
        self._open = {}  # of descriptors: the file and the offset
        self._lasting_names = {}
        self._lasting_bytes = {}  # by the identity of a file
        for name in os.listdir(folder):
            path = os.path.join(folder, name)
            with open(path, "rb") as file:
                self._names[path.encode()] = [file.read()]
        self._flush_names()
        for file in self._names.values():
            self._flush(file)

    def _flush(self, file):
        self._lasting_bytes[id(file)] = file, file[0]

    def _flush_names(self):
        self._lasting_names = dict(self._names)

    def after_power_cut(self, path):
        """The bytes of a file that is found afterwards; None if there is none."""
        file = self._lasting_names.get(path.encode())
        return self._lasting_bytes.get(id(file), (file, b""))[1] if file else None

    def apply(self, line):
        """Carries out one call."""
        found = _CALL.search(line)
        if not found or int(found[3]) < 0:
            return
        name, arguments, result = found[1], found[2], int(found[3])
        handler = getattr(self, "_" + name, None)
        if handler:
            descriptor = _DESCRIPTOR.match(arguments)
            handler(arguments, int(descriptor[1]) if descriptor else None, result)

    def _openat(self, arguments, _, result):
        path = _strings(arguments)[0]
        if "O_CREAT" in arguments:
            self._names.setdefault(path, [b""])
        file = self._names.get(path)
        if file and "O_TRUNC" in arguments:
            file[0] = b""
        self._open[result] = [file, 0]

    def _close(self, _, descriptor, __):
        self._open.pop(descriptor, None)

    def _put(self, descriptor, data, offset):
        file = self._open.get(descriptor, (None, 0))[0]
        if file:
            file[0] = file[0][:offset] + data + file[0][offset + len(data):]

    def _write(self, arguments, descriptor, result):
        opened = self._open.get(descriptor)
        if opened:
            self._put(descriptor, _strings(arguments)[0][:result], opened[1])
            opened[1] += result

    def _pwrite64(self, arguments, descriptor, result):
        self._put(descriptor, _strings(arguments)[0][:result], int(arguments.rpartition(",")[2]))

    def _ftruncate(self, arguments, descriptor, _):
        file = self._open.get(descriptor, (None, 0))[0]
        if file:
            file[0] = file[0][:int(arguments.rpartition(",")[2])]

    def _unlink(self, arguments, _, __):
        self._names.pop(_strings(arguments)[0], None)

    def _rename(self, arguments, _, __):
        source, target = _strings(arguments)
        self._names[target] = self._names.pop(source)

    def _fsync(self, arguments, descriptor, _):
        file = self._open.get(descriptor, (None, 0))[0]
        if file:
            self._flush(file)
        elif f"<{self._folder}>" in arguments:
            self._flush_names()
