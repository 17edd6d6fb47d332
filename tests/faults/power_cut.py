# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What a power cut may leave: all that was flushed to the disk, and any part of the rest."""
import codecs
import itertools
import os
import re

_CALL = re.compile(r"(\w+)\((.*)\)\s+= (-?\d+)")
_STRING = re.compile(r'"((?:[^"\\]|\\.)*)"')
_DESCRIPTOR = re.compile(r"^(\d+)<")


def _strings(arguments):
    return [codecs.escape_decode(text.encode())[0] for text in _STRING.findall(arguments)]


class Disk:
    """Files as a running system sees them, and as they are found after a power cut.

    Is told the system calls of a program, as lines of strace with full strings. What was done to the
    bytes of a file lasts once it is flushed, what was done to the names in the folder once that is.
    Of the rest a power cut leaves some: of each file the bytes that it had after any of its changes,
    and the names that there were after any change of a name.
    """

    def __init__(self, folder):
        self._folder = folder
        self._names = {}  # of files: what their bytes were from the last flush on
        self._open = {}  # of descriptors: the file and the offset
        for name in os.listdir(folder):
            path = os.path.join(folder, name)
            with open(path, "rb") as file:
                self._names[path.encode()] = [file.read()]
        self._names_since_flush = [dict(self._names)]

    def after_power_cut(self, *paths):
        """Every combination of the bytes that the files may have afterwards; None where one is not."""
        return {found for names in self._names_since_flush
                for found in itertools.product(*(names.get(path.encode(), [None])
                                                 for path in paths))}

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
        if "O_CREAT" in arguments and path not in self._names:
            self._names[path] = [b""]
            self._names_changed()
        file = self._names.get(path)
        if file and "O_TRUNC" in arguments:
            file.append(b"")
        self._open[result] = [file, 0]

    def _close(self, _, descriptor, __):
        self._open.pop(descriptor, None)

    def _put(self, descriptor, data, offset):
        file = self._open.get(descriptor, (None, 0))[0]
        if file:
            file.append(file[-1][:offset] + data + file[-1][offset + len(data):])

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
            file.append(file[-1][:int(arguments.rpartition(",")[2])])

    def _names_changed(self):
        self._names_since_flush.append(dict(self._names))

    def _unlink(self, arguments, _, __):
        self._names.pop(_strings(arguments)[0], None)
        self._names_changed()

    def _rename(self, arguments, _, __):
        source, target = _strings(arguments)
        self._names[target] = self._names.pop(source)
        self._names_changed()

    def _fsync(self, arguments, descriptor, _):
        file = self._open.get(descriptor, (None, 0))[0]
        if file:
            del file[:-1]
        elif f"<{self._folder}>" in arguments:
            del self._names_since_flush[:-1]
